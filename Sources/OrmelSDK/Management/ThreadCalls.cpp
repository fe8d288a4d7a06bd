#include "OrmelSDK/Management/ThreadCalls.h"

#include "OrmelSDK/Management/ParamsObject.h"
#include "OrmelSDK/Records/ThreadGoal.h"

namespace ormel::detail::calls {

namespace {

ParamsObject ofThread(const std::string& threadID) {
  ParamsObject params;
  params.always("threadId", threadID);
  return params;
}

JSONValue gitInfo(const ThreadMetadataGitInfoUpdate& changes) {
  return ParamsObject()
      .update("branch", changes.branch)
      .update("sha", changes.sha)
      .update("originUrl", changes.originURL)
      .build();
}

JSONValue turnItemsParams(const std::string& threadID, const std::string& turnID,
                          const ListThreadTurnItemsParams& params) {
  return ofThread(threadID)
      .always("turnId", turnID)
      .ifGiven("cursor", params.cursor)
      .ifGiven("limit", params.limit)
      .ifGiven("sortDirection", params.sortDirection)
      .build();
}

}  // namespace

Call<ThreadListResponse> listThreads(const ListThreadsParams& params) {
  return {"thread/list", ParamsObject()
                             .ifGiven("cursor", params.cursor)
                             .ifGiven("limit", params.limit)
                             .ifGiven("sortKey", params.sortKey)
                             .ifGiven("sortDirection", params.sortDirection)
                             .ifGiven("modelProviders", params.modelProviders)
                             .ifGiven("sourceKinds", params.sourceKinds)
                             .ifGiven("archived", params.archived)
                             .ifGiven("cwd", params.cwd)
                             .ifGiven("useStateDbOnly", params.useStateDBOnly)
                             .ifGiven("searchTerm", params.searchTerm)
                             .build()};
}

Call<ThreadListResponse> listLoadedThreads(const ListLoadedThreadsParams& params) {
  return {"thread/loaded/list", ParamsObject().ifGiven("cursor", params.cursor).ifGiven("limit", params.limit).build()};
}

Call<ThreadReadResponse> readThread(const std::string& threadID, const ReadThreadParams& params) {
  return {"thread/read", ofThread(threadID).always("includeTurns", params.includeTurns).build()};
}

Call<ThreadForkResponse> forkThread(const std::string& threadID, const ForkThreadParams& params) {
  return {"thread/fork", ofThread(threadID)
                             .ifGiven("lastTurnId", params.lastTurnID)
                             .ifGiven("model", params.model)
                             .ifGiven("modelProvider", params.modelProvider)
                             .ifGiven("serviceTier", params.serviceTier)
                             .ifGiven("cwd", params.workingDirectory)
                             .ifGiven("approvalPolicy", params.approvalPolicy)
                             .ifGiven("approvalsReviewer", params.approvalsReviewer)
                             .ifGiven("sandbox", params.sandboxMode)
                             .ifGiven("config", params.config)
                             .ifGiven("baseInstructions", params.baseInstructions)
                             .ifGiven("developerInstructions", params.developerInstructions)
                             .ifGiven("ephemeral", params.ephemeral)
                             .ifGiven("threadSource", params.threadSource)
                             .build()};
}

Call<ThreadForkResponse> forkThread(const std::string& threadID, const ForkThreadInSessionParams& params) {
  return {"thread/fork",
          ofThread(threadID).ifGiven("lastTurnId", params.lastTurnID).ifGiven("ephemeral", params.ephemeral).build()};
}

DroppedCall<EmptyRPCResponse> archiveThread(const std::string& threadID) {
  return {{"thread/archive", ofThread(threadID).build()}};
}

DroppedCall<EmptyRPCResponse> deleteThread(const std::string& threadID) {
  return {{"thread/delete", ofThread(threadID).build()}};
}

Call<ThreadReadResponse> unarchiveThread(const std::string& threadID) {
  return {"thread/unarchive", ofThread(threadID).build()};
}

Call<ThreadUnsubscribeResponse> unsubscribeThread(const std::string& threadID) {
  return {"thread/unsubscribe", ofThread(threadID).build()};
}

DroppedCall<EmptyRPCResponse> setThreadName(const std::string& threadID, const std::string& name) {
  return {{"thread/name/set", ofThread(threadID).always("name", name).build()}};
}

DroppedCall<EmptyRPCResponse> compactThread(const std::string& threadID) {
  return {{"thread/compact/start", ofThread(threadID).build()}};
}

DroppedCall<EmptyRPCResponse> runThreadShellCommand(const std::string& threadID, const std::string& command) {
  return {{"thread/shellCommand", ofThread(threadID).always("command", command).build()}};
}

DroppedCall<EmptyRPCResponse> approveGuardianDeniedAction(const std::string& threadID, const JSONValue& event) {
  return {{"thread/approveGuardianDeniedAction", ofThread(threadID).always("event", event).build()}};
}

Call<ThreadReadResponse> updateThreadMetadata(const std::string& threadID, const UpdateThreadMetadataParams& params) {
  ParamsObject members = ofThread(threadID);
  if (params.gitInfo) members.always("gitInfo", gitInfo(*params.gitInfo));
  return {"thread/metadata/update", members.build()};
}

Call<ThreadSettingsUpdateResponse> updateThreadSettings(const std::string& threadID,
                                                        const UpdateThreadSettingsParams& params) {
  return {"thread/settings/update", ofThread(threadID)
                                        .ifGiven("cwd", params.workingDirectory)
                                        .ifGiven("approvalPolicy", params.approvalPolicy)
                                        .ifGiven("approvalsReviewer", params.approvalsReviewer)
                                        .ifGiven("sandboxPolicy", params.sandboxPolicy)
                                        .ifGiven("permissions", params.permissions)
                                        .ifGiven("model", params.model)
                                        .update("serviceTier", params.serviceTier)
                                        .ifGiven("effort", params.modelReasoningEffort)
                                        .ifGiven("summary", params.modelReasoningSummary)
                                        .ifGiven("collaborationMode", params.collaborationMode)
                                        .ifGiven("personality", params.personality)
                                        .build()};
}

DroppedCall<ConfigWriteAck> injectThreadItems(const std::string& threadID, const std::vector<JSONValue>& items) {
  return {{"thread/inject_items", ofThread(threadID).always("items", items).build()}};
}

Call<ThreadTurnsListResponse> listThreadTurns(const std::string& threadID, const ListThreadTurnsParams& params) {
  return {"thread/turns/list", ofThread(threadID)
                                   .ifGiven("cursor", params.cursor)
                                   .ifGiven("limit", params.limit)
                                   .ifGiven("sortDirection", params.sortDirection)
                                   .ifGiven("itemsView", params.itemsView)
                                   .build()};
}

Call<ThreadTurnItemsListResponse> listThreadTurnItems(const std::string& threadID, const std::string& turnID,
                                                      const ListThreadTurnItemsParams& params) {
  return {"thread/items/list", turnItemsParams(threadID, turnID, params)};
}

Call<LegacyThreadTurnItemsListResponse> listLegacyThreadTurnItems(const std::string& threadID,
                                                                  const std::string& turnID,
                                                                  const ListThreadTurnItemsParams& params) {
  return {"thread/turns/items/list", turnItemsParams(threadID, turnID, params)};
}

Call<ThreadGoalSetResponse> setThreadGoal(const std::string& threadID, const SetThreadGoalParams& params) {
  return {"thread/goal/set", ofThread(threadID)
                                 .ifGiven("objective", params.objective)
                                 .ifGiven("status", params.status)
                                 .update("tokenBudget", params.tokenBudget)
                                 .build()};
}

Call<ThreadGoalGetResponse> readThreadGoal(const std::string& threadID) {
  return {"thread/goal/get", ofThread(threadID).build()};
}

Call<ThreadGoalClearResponse> clearThreadGoal(const std::string& threadID) {
  return {"thread/goal/clear", ofThread(threadID).build()};
}

Call<ReviewStartResponse> startReview(const std::string& threadID, const ReviewTarget& target,
                                      const StartReviewParams& params) {
  return {"review/start", ofThread(threadID).always("target", target).ifGiven("delivery", params.delivery).build()};
}

Call<ConversationSummaryResponse> getConversationSummary(const GetConversationSummaryParams& params) {
  return {"getConversationSummary", ParamsObject()
                                        .ifGiven("conversationId", params.conversationID)
                                        .ifGiven("rolloutPath", params.rolloutPath)
                                        .build()};
}

}  // namespace ormel::detail::calls
