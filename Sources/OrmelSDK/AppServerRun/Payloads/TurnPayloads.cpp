#include "OrmelSDK/AppServerRun/Payloads/TurnPayloads.h"

#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/Payloads/AppServerConfigPayload.h"
#include "OrmelSDK/AppServerRun/Payloads/AppServerDynamicToolsPayload.h"
#include "OrmelSDK/AppServerRun/Payloads/AppServerInputPayload.h"
#include "OrmelSDK/AppServerRun/Payloads/AppServerPayloadMembers.h"
#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Input/ThreadChoices.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

// What a start and a resume have in common.
JSONObjectBuilder threadMembers(const ThreadOptions& thread, const OrmelOptions& ormelOptions) {
  JSONObjectBuilder params;
  setIfPresent(params, "model", thread.model);
  setIfPresent(params, "modelProvider", thread.modelProvider);
  setIfPresent(params, "cwd", thread.workingDirectory);
  setIfPresent(params, "runtimeWorkspaceRoots", thread.runtimeWorkspaceRoots);
  setIfPresent(params, "approvalPolicy", thread.approvalPolicy);
  setIfPresent(params, "approvalsReviewer", thread.approvalsReviewer);
  setIfPresent(params, "sandbox", thread.sandboxMode);
  setIfPresent(params, "permissions", thread.permissions);
  setIfPresent(params, "serviceTier", thread.serviceTier);
  setIfPresent(params, "baseInstructions", thread.baseInstructions);
  setIfPresent(params, "developerInstructions", thread.developerInstructions);
  setIfPresent(params, "personality", thread.personality);
  setIfPresent(params, "threadSource", thread.threadSource);
  setIfPresent(params, "environments", buildEnvironmentArray(thread.environments));
  setIfPresent(params, "dynamicTools", buildDynamicToolsArray(thread.dynamicTools));
  params.set("config", buildConfigObject(thread, ormelOptions));
  return params;
}

// What a turn and a steer have in common.
JSONObjectBuilder inputMembers(const std::string& threadID, const Input& input, const TurnOptions& turn) {
  JSONObjectBuilder params;
  params.set("threadId", threadID);
  params.set("input", appServerInputItems(input));
  if (turn.responsesAPIClientMetadata && !turn.responsesAPIClientMetadata->empty()) {
    setIfPresent(params, "responsesapiClientMetadata", turn.responsesAPIClientMetadata);
  }
  setIfPresent(params, "clientUserMessageId", turn.clientUserMessageID);
  setIfPresent(params, "additionalContext", buildAdditionalContextObject(turn.additionalContext));
  return params;
}

template <typename Value>
const std::optional<Value>& firstPresent(const std::optional<Value>& ofTurn, const std::optional<Value>& ofThread) {
  return ofTurn ? ofTurn : ofThread;
}

JSONValue fullAccess() { return JSONValue::object({{"type", "fullAccess"}}); }

JSONValue workspaceWritePolicy(const ThreadOptions& thread) {
  std::vector<JSONValue> writableRoots;
  if (thread.workingDirectory) writableRoots.emplace_back(*thread.workingDirectory);
  if (thread.additionalDirectories) {
    writableRoots.insert(writableRoots.end(), thread.additionalDirectories->begin(),
                         thread.additionalDirectories->end());
  }
  return JSONValue::object({{"type", "workspaceWrite"},
                            {"writableRoots", JSONValue::array(writableRoots)},
                            {"readOnlyAccess", fullAccess()},
                            {"networkAccess", thread.networkAccessEnabled.value_or(false)},
                            {"excludeTmpdirEnvVar", false},
                            {"excludeSlashTmp", false}});
}

}  // namespace

JSONValue buildThreadStartParams(const ThreadOptions& threadOptions, const OrmelOptions& ormelOptions) {
  JSONObjectBuilder params = threadMembers(threadOptions, ormelOptions);
  setIfPresent(params, "serviceName", threadOptions.serviceName);
  setIfPresent(params, "ephemeral", threadOptions.ephemeral);
  setIfPresent(params, "sessionStartSource", threadOptions.sessionStartSource);
  return params.build();
}

JSONValue buildThreadResumeParams(const std::string& threadID, const ThreadOptions& threadOptions,
                                  const OrmelOptions& ormelOptions) {
  JSONObjectBuilder params = threadMembers(threadOptions, ormelOptions);
  params.set("threadId", threadID);
  params.set("excludeTurns", true);
  return params.build();
}

JSONValue buildTurnStartParams(const std::string& threadID, const Input& input, const TurnOptions& turnOptions,
                               const ThreadOptions& threadOptions) {
  const auto& turn = turnOptions;
  const auto& thread = threadOptions;
  JSONObjectBuilder params = inputMembers(threadID, input, turn);
  setIfPresent(params, "environments", buildEnvironmentArray(turn.environments));
  setIfPresent(params, "cwd", firstPresent(turn.workingDirectory, thread.workingDirectory));
  setIfPresent(params, "runtimeWorkspaceRoots", turn.runtimeWorkspaceRoots);
  setIfPresent(params, "approvalPolicy", firstPresent(turn.approvalPolicy, thread.approvalPolicy));
  setIfPresent(params, "approvalsReviewer", firstPresent(turn.approvalsReviewer, thread.approvalsReviewer));
  setIfPresent(params, "model", firstPresent(turn.model, thread.model));
  setIfPresent(params, "effort", firstPresent(turn.modelReasoningEffort, thread.modelReasoningEffort));
  setIfPresent(params, "serviceTier", firstPresent(turn.serviceTier, thread.serviceTier));
  setIfPresent(params, "summary", turn.modelReasoningSummary);
  setIfPresent(params, "personality", turn.personality);
  setIfPresent(params, "outputSchema", turn.outputSchema);
  setIfPresent(params, "sandboxPolicy", buildSandboxPolicy(turn, thread));
  setIfPresent(params, "permissions", firstPresent(turn.permissions, thread.permissions));
  setIfPresent(params, "collaborationMode", buildCollaborationModePayload(turn, thread));
  return params.build();
}

JSONValue buildTurnSteerParams(const std::string& threadID, const std::string& turnID, const Input& input,
                               const TurnOptions& turnOptions) {
  JSONObjectBuilder params = inputMembers(threadID, input, turnOptions);
  params.set("expectedTurnId", turnID);
  return params.build();
}

std::optional<JSONValue> buildSandboxPolicy(const TurnOptions& turnOptions, const ThreadOptions& threadOptions) {
  if (turnOptions.sandboxPolicy) {
    return coding::Codec<std::map<std::string, JSONValue>>::encode(*turnOptions.sandboxPolicy);
  }
  const auto& thread = threadOptions;
  if (thread.sandboxMode == SandboxMode::dangerFullAccess) return JSONValue::object({{"type", "dangerFullAccess"}});
  if (thread.sandboxMode == SandboxMode::readOnly) {
    return JSONValue::object({{"type", "readOnly"}, {"access", fullAccess()}});
  }
  const bool hasExtras = (thread.additionalDirectories && !thread.additionalDirectories->empty()) ||
                         thread.networkAccessEnabled.has_value();
  if (!thread.sandboxMode && !hasExtras) return std::nullopt;
  return workspaceWritePolicy(thread);
}

std::optional<JSONValue> buildCollaborationModePayload(const TurnOptions& turnOptions,
                                                       const ThreadOptions& threadOptions) {
  const auto& mode = firstPresent(turnOptions.collaborationMode, threadOptions.collaborationMode);
  const auto& model = firstPresent(turnOptions.model, threadOptions.model);
  if (!mode || !model || trimmed(*model).empty()) return std::nullopt;
  JSONObjectBuilder settings;
  settings.set("model", *model);
  settings.set("developer_instructions", nullptr);
  setIfPresent(settings, "reasoning_effort",
               firstPresent(turnOptions.modelReasoningEffort, threadOptions.modelReasoningEffort));
  return JSONValue::object({{"mode", rawValue(*mode)}, {"settings", settings.build()}});
}

std::optional<JSONValue> buildSkillExtraRootsParams(const ThreadOptions& threadOptions) {
  if (!threadOptions.skillExtraRoots) return std::nullopt;
  std::vector<JSONValue> roots;
  for (const auto& given : *threadOptions.skillExtraRoots) {
    if (const auto root = trimmed(given); !root.empty()) roots.emplace_back(root);
  }
  if (roots.empty()) return std::nullopt;
  return JSONValue::object({{"extraRoots", JSONValue::array(roots)}});
}

}  // namespace ormel::detail
