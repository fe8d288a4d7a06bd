#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string_view>

#include "Check.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Records/AccountRecords.h"
#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/CommandRecords.h"
#include "OrmelSDK/Records/ConfigRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ExperimentalFeatureRecords.h"
#include "OrmelSDK/Records/ExternalAgentRecords.h"
#include "OrmelSDK/Records/FileRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PermissionRecords.h"
#include "OrmelSDK/Records/PluginRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"

namespace {

using namespace ormel;

template <typename Record>
JSONValue writtenAfterPrinting(const Record& reply, const JSONValue& value) {
  std::ostringstream printed;
  printed << reply;
  fuzzing::expect(printed.str().find('\n') == std::string::npos, "what is printed is one line", value);
  return JSONValue::decode(encode(reply).encode());
}

/// Fails with `DecodingError`. Once the reply has been read, nothing may fail.
template <typename Record>
void readReply(const JSONValue& value) {
  const auto reply = decode<Record>(value);
  try {
    const JSONValue written = writtenAfterPrinting(reply, value);
    fuzzing::expect(decode<Record>(written) == reply, "what is written reads back equal", value);
  } catch (const Error& error) {
    fuzzing::expect(false, error.what(), value);
  }
}

/// The same for replies with items: some kinds are written without the word that they could be read back by.
template <typename Record>
void readReplyWithItems(const JSONValue& value) {
  const auto reply = decode<Record>(value);
  try {
    writtenAfterPrinting(reply, value);
  } catch (const Error& error) {
    fuzzing::expect(false, error.what(), value);
  }
}

struct Reply {
  std::string_view method;
  void (*read)(const JSONValue& value);
};

constexpr Reply replies[] = {
    {"account/login/cancel", readReply<AccountLoginCancelResponse>},
    {"account/login/start", readReply<AccountLoginResponse>},
    {"account/logout", readReply<EmptyRPCResponse>},
    {"account/rateLimitResetCredit/consume", readReply<AccountRateLimitResetCreditConsumeResponse>},
    {"account/rateLimits/read", readReply<AccountRateLimitsResponse>},
    {"account/read", readReply<AccountReadResponse>},
    {"account/sendAddCreditsNudgeEmail", readReply<AddCreditsNudgeEmailResponse>},
    {"account/usage/read", readReply<AccountTokenUsageResponse>},
    {"account/workspaceMessages/read", readReply<WorkspaceMessagesResponse>},
    {"app/installed", readReply<AppsInstalledResponse>},
    {"app/list", readReply<AppsListResponse>},
    {"app/read", readReply<AppsReadResponse>},
    {"command/exec", readReply<CommandExecResponse>},
    {"command/exec/resize", readReply<EmptyRPCResponse>},
    {"command/exec/terminate", readReply<EmptyRPCResponse>},
    {"command/exec/write", readReply<EmptyRPCResponse>},
    {"config/batchWrite", readReply<ConfigBatchWriteResponse>},
    {"config/mcpServer/reload", readReply<EmptyRPCResponse>},
    {"config/read", readReply<ConfigReadResponse>},
    {"config/value/write", readReply<ConfigWriteAck>},
    {"configRequirements/read", readReply<ConfigRequirementsReadResponse>},
    {"device/key/create", readReply<DeviceKeyCreateResponse>},
    {"device/key/public", readReply<DeviceKeyCreateResponse>},
    {"device/key/sign", readReply<DeviceKeySignResponse>},
    {"environment/add", readReply<EnvironmentAddResponse>},
    {"experimentalFeature/enablement/set", readReply<ExperimentalFeatureEnablementSetResponse>},
    {"experimentalFeature/list", readReply<ExperimentalFeatureListResponse>},
    {"externalAgentConfig/detect", readReply<ExternalAgentConfigDetectResponse>},
    {"externalAgentConfig/import", readReply<ExternalAgentConfigImportResponse>},
    {"externalAgentConfig/import/readHistories", readReply<ExternalAgentConfigImportHistoriesReadResponse>},
    {"feedback/upload", readReply<FeedbackUploadResponse>},
    {"fs/copy", readReply<EmptyRPCResponse>},
    {"fs/createDirectory", readReply<EmptyRPCResponse>},
    {"fs/getMetadata", readReply<FsGetMetadataResponse>},
    {"fs/readDirectory", readReply<FsReadDirectoryResponse>},
    {"fs/readFile", readReply<FsReadFileResponse>},
    {"fs/remove", readReply<EmptyRPCResponse>},
    {"fs/unwatch", readReply<EmptyRPCResponse>},
    {"fs/watch", readReply<FsWatchResponse>},
    {"fs/writeFile", readReply<EmptyRPCResponse>},
    {"fuzzyFileSearch", readReply<FuzzyFileSearchResponse>},
    {"getAuthStatus", readReply<AuthStatusResponse>},
    {"getConversationSummary", readReply<ConversationSummaryResponse>},
    {"gitDiffToRemote", readReply<GitDiffToRemoteResponse>},
    {"hooks/list", readReply<HooksListResponse>},
    {"marketplace/add", readReply<MarketplaceAddResponse>},
    {"marketplace/remove", readReply<MarketplaceRemoveResponse>},
    {"marketplace/upgrade", readReply<MarketplaceUpgradeResponse>},
    {"mcpServer/oauth/login", readReply<McpServerOAuthLoginResponse>},
    {"mcpServer/resource/read", readReply<McpResourceReadResponse>},
    {"mcpServer/tool/call", readReply<McpServerToolCallResponse>},
    {"mcpServerStatus/list", readReply<McpServerStatusListResponse>},
    {"model/list", readReply<ModelListResponse>},
    {"modelProvider/capabilities/read", readReply<ModelProviderCapabilitiesReadResponse>},
    {"permissionProfile/list", readReply<PermissionProfileListResponse>},
    {"plugin/install", readReply<PluginInstallResponse>},
    {"plugin/installed", readReply<PluginInstalledResponse>},
    {"plugin/list", readReply<PluginListResponse>},
    {"plugin/read", readReply<PluginReadResponse>},
    {"plugin/share/checkout", readReply<PluginShareCheckoutResponse>},
    {"plugin/share/delete", readReply<PluginShareDeleteResponse>},
    {"plugin/share/list", readReply<PluginShareListResponse>},
    {"plugin/share/save", readReply<PluginShareSaveResponse>},
    {"plugin/share/updateTargets", readReply<PluginShareUpdateTargetsResponse>},
    {"plugin/skill/read", readReply<PluginSkillReadResponse>},
    {"plugin/uninstall", readReply<PluginUninstallResponse>},
    {"remoteControl/disable", readReply<RemoteControlStatusResponse>},
    {"remoteControl/enable", readReply<RemoteControlStatusResponse>},
    {"remoteControl/status/read", readReply<RemoteControlStatusResponse>},
    {"review/start", readReplyWithItems<ReviewStartResponse>},
    {"skills/config/write", readReply<ConfigWriteAck>},
    {"skills/list", readReply<SkillsListResponse>},
    {"thread/approveGuardianDeniedAction", readReply<EmptyRPCResponse>},
    {"thread/archive", readReply<EmptyRPCResponse>},
    {"thread/compact/start", readReply<EmptyRPCResponse>},
    {"thread/delete", readReply<EmptyRPCResponse>},
    {"thread/fork", readReplyWithItems<ThreadForkResponse>},
    {"thread/goal/clear", readReply<ThreadGoalClearResponse>},
    {"thread/goal/get", readReply<ThreadGoalGetResponse>},
    {"thread/goal/set", readReply<ThreadGoalSetResponse>},
    {"thread/inject_items", readReply<ConfigWriteAck>},
    {"thread/items/list", readReplyWithItems<ThreadTurnItemsListResponse>},
    {"thread/list", readReplyWithItems<ThreadListResponse>},
    {"thread/loaded/list", readReplyWithItems<ThreadListResponse>},
    {"thread/metadata/update", readReplyWithItems<ThreadReadResponse>},
    {"thread/name/set", readReply<EmptyRPCResponse>},
    {"thread/read", readReplyWithItems<ThreadReadResponse>},
    {"thread/settings/update", readReply<ThreadSettingsUpdateResponse>},
    {"thread/shellCommand", readReply<EmptyRPCResponse>},
    {"thread/turns/items/list", readReplyWithItems<LegacyThreadTurnItemsListResponse>},
    {"thread/turns/list", readReplyWithItems<ThreadTurnsListResponse>},
    {"thread/unarchive", readReplyWithItems<ThreadReadResponse>},
    {"thread/unsubscribe", readReply<ThreadUnsubscribeResponse>},
    {"windowsSandbox/readiness", readReply<WindowsSandboxReadinessResponse>},
    {"windowsSandbox/setupStart", readReply<WindowsSandboxSetupStartResponse>},
};

}  // namespace

// A method of the management calls on the first line, and any text after it as the server's reply.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  const auto lineEnd = input.find('\n');
  if (lineEnd == std::string_view::npos) return 0;
  for (const Reply& reply : replies) {
    if (reply.method != input.substr(0, lineEnd)) continue;
    try {
      reply.read(JSONValue::decode(input.substr(lineEnd + 1)));
    } catch (const DecodingError&) {
      return 0;
    }
  }
  return 0;
}

#ifndef LLVMFuzzerTestOneInput
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t maximum);

// Changes the reply and leaves the method, so that each input is read to some depth.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t maximum,
                                               unsigned int /*seed*/) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  const auto lineEnd = input.find('\n');
  const std::size_t replyAt = lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
  if (replyAt >= maximum) return size;
  return replyAt + LLVMFuzzerMutate(bytes + replyAt, size - replyAt, maximum - replyAt);
}
#endif
