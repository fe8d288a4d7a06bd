#include "OrmelSDK/Management/AppParams.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/ParamsTable.h"

template <>
struct ormel::coding::EnumerationTable<ormel::McpServerStatusDetail> {
  static constexpr auto rule = closed;
  static constexpr Word<McpServerStatusDetail> words[] = {
      {McpServerStatusDetail::full, "full"},
      {McpServerStatusDetail::toolsAndAuthOnly, "toolsAndAuthOnly"},
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListAppsParams> {
  using P = ListAppsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
      ifGiven<&P::threadID>("threadId"),
      ifGiven<&P::forceRefetch>("forceRefetch"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListInstalledAppsParams> {
  using P = ListInstalledAppsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::threadID>("threadId"),
      ifTrue<&P::forceRefresh>("forceRefresh"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ReadAppsParams> {
  using P = ReadAppsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::threadID>("threadId"),
      ifTrue<&P::includeTools>("includeTools"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListMcpServerStatusParams> {
  using P = ListMcpServerStatusParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
      ifGiven<&P::detail>("detail"),
      ifGiven<&P::threadID>("threadId"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::StartMcpServerOAuthLoginParams> {
  using P = StartMcpServerOAuthLoginParams;
  static constexpr Field fields[] = {
      ifGiven<&P::threadID>("threadId"),
      ifGiven<&P::scopes>("scopes"),
      ifGiven<&P::timeoutSeconds>("timeoutSecs"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::CallMcpServerToolParams> {
  using P = CallMcpServerToolParams;
  static constexpr Field fields[] = {
      ifGiven<&P::arguments>("arguments"),
      ifGiven<&P::meta>("_meta"),
  };
};

ORMEL_DEFINE_ENUMERATION(McpServerStatusDetail)
ORMEL_DEFINE_PARAMS(ListAppsParams)
ORMEL_DEFINE_PARAMS(ListInstalledAppsParams)
ORMEL_DEFINE_PARAMS(ReadAppsParams)
ORMEL_DEFINE_PARAMS(ListMcpServerStatusParams)
ORMEL_DEFINE_PARAMS(StartMcpServerOAuthLoginParams)
ORMEL_DEFINE_PARAMS(CallMcpServerToolParams)
