#include "OrmelSDK/Management/CommandParams.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/ParamsTable.h"

template <>
struct ormel::coding::EnumerationTable<ormel::WindowsSandboxSetupMode> {
  static constexpr auto rule = closed;
  static constexpr Word<WindowsSandboxSetupMode> words[] = {
      {WindowsSandboxSetupMode::elevated, "elevated"},
      {WindowsSandboxSetupMode::unelevated, "unelevated"},
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ExecuteCommandParams> {
  using P = ExecuteCommandParams;
  static constexpr Field fields[] = {
      ifGiven<&P::processID>("processId"),
      ifGiven<&P::workingDirectory>("cwd"),
      ifGiven<&P::timeoutMilliseconds>("timeoutMs"),
      ifGiven<&P::streamStdoutStderr>("streamStdoutStderr"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::WriteCommandInputParams> {
  using P = WriteCommandInputParams;
  static constexpr Field fields[] = {
      ifGiven<&P::deltaBase64>("deltaBase64"),
      ifGiven<&P::closeStdin>("closeStdin"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::StartWindowsSandboxSetupParams> {
  static constexpr Field fields[] = {
      ifGiven<&StartWindowsSandboxSetupParams::workingDirectory>("cwd"),
  };
};

ORMEL_DEFINE_ENUMERATION(WindowsSandboxSetupMode)
ORMEL_DEFINE_PARAMS(ExecuteCommandParams)
ORMEL_DEFINE_PARAMS(WriteCommandInputParams)
ORMEL_DEFINE_PARAMS(StartWindowsSandboxSetupParams)
