#include "OrmelSDK/Records/CommandRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::CommandExecTerminalSize> {
  static constexpr Field fields[] = {
      required<&CommandExecTerminalSize::rows>("rows"),
      required<&CommandExecTerminalSize::cols>("cols"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::CommandExecResponse> {
  static constexpr Field fields[] = {
      required<&CommandExecResponse::exitCode>("exitCode"),
      required<&CommandExecResponse::stdout>("stdout"),
      required<&CommandExecResponse::stderr>("stderr"),
  };
};

ORMEL_DEFINE_RECORD(CommandExecTerminalSize)
ORMEL_DEFINE_RECORD(CommandExecResponse)
