#include "OrmelSDK/Management/ThreadCalls.h"

#include "OrmelSDK/Coding/ParamsTable.h"

namespace ormel::detail::calls {

Call<ThreadListResponse> listThreads(const ListThreadsParams& params) {
  return {"thread/list", coding::encodeParams(params)};
}

Call<ThreadListResponse> listLoadedThreads(const ListLoadedThreadsParams& params) {
  return {"thread/loaded/list", coding::encodeParams(params)};
}

Call<ThreadReadResponse> readThread(const std::string& threadID, const ReadThreadParams& params) {
  return {"thread/read", callParams({{"threadId", threadID}}, params)};
}

Call<ThreadForkResponse> forkThread(const std::string& threadID, const ForkThreadParams& params) {
  return {"thread/fork", callParams({{"threadId", threadID}}, params)};
}

Call<ThreadForkResponse> forkThread(const std::string& threadID, const ForkThreadInSessionParams& params) {
  return {"thread/fork", callParams({{"threadId", threadID}}, params)};
}

DroppedCall<EmptyRPCResponse> archiveThread(const std::string& threadID) {
  return {{"thread/archive", callParams({{"threadId", threadID}})}};
}

DroppedCall<EmptyRPCResponse> deleteThread(const std::string& threadID) {
  return {{"thread/delete", callParams({{"threadId", threadID}})}};
}

Call<ThreadReadResponse> unarchiveThread(const std::string& threadID) {
  return {"thread/unarchive", callParams({{"threadId", threadID}})};
}

Call<ThreadUnsubscribeResponse> unsubscribeThread(const std::string& threadID) {
  return {"thread/unsubscribe", callParams({{"threadId", threadID}})};
}

DroppedCall<EmptyRPCResponse> setThreadName(const std::string& threadID, const std::string& name) {
  return {{"thread/name/set", callParams({{"threadId", threadID}, {"name", name}})}};
}

DroppedCall<EmptyRPCResponse> compactThread(const std::string& threadID) {
  return {{"thread/compact/start", callParams({{"threadId", threadID}})}};
}

DroppedCall<EmptyRPCResponse> runThreadShellCommand(const std::string& threadID, const std::string& command) {
  return {{"thread/shellCommand", callParams({{"threadId", threadID}, {"command", command}})}};
}

DroppedCall<EmptyRPCResponse> approveGuardianDeniedAction(const std::string& threadID, const JSONValue& event) {
  return {{"thread/approveGuardianDeniedAction", callParams({{"threadId", threadID}, {"event", event}})}};
}

Call<ThreadReadResponse> updateThreadMetadata(const std::string& threadID, const UpdateThreadMetadataParams& params) {
  return {"thread/metadata/update", callParams({{"threadId", threadID}}, params)};
}

Call<ThreadSettingsUpdateResponse> updateThreadSettings(const std::string& threadID,
                                                        const UpdateThreadSettingsParams& params) {
  return {"thread/settings/update", callParams({{"threadId", threadID}}, params)};
}

DroppedCall<ConfigWriteAck> injectThreadItems(const std::string& threadID, const std::vector<JSONValue>& items) {
  return {{"thread/inject_items", callParams({{"threadId", threadID}, {"items", JSONValue::array(items)}})}};
}

Call<ThreadTurnsListResponse> listThreadTurns(const std::string& threadID, const ListThreadTurnsParams& params) {
  return {"thread/turns/list", callParams({{"threadId", threadID}}, params)};
}

Call<ThreadTurnItemsListResponse> listThreadTurnItems(const std::string& threadID, const std::string& turnID,
                                                      const ListThreadTurnItemsParams& params) {
  return {"thread/items/list", callParams({{"threadId", threadID}, {"turnId", turnID}}, params)};
}

Call<LegacyThreadTurnItemsListResponse> listLegacyThreadTurnItems(const std::string& threadID,
                                                                  const std::string& turnID,
                                                                  const ListThreadTurnItemsParams& params) {
  return {"thread/turns/items/list", listThreadTurnItems(threadID, turnID, params).params};
}

Call<ThreadGoalSetResponse> setThreadGoal(const std::string& threadID, const SetThreadGoalParams& params) {
  return {"thread/goal/set", callParams({{"threadId", threadID}}, params)};
}

Call<ThreadGoalGetResponse> readThreadGoal(const std::string& threadID) {
  return {"thread/goal/get", callParams({{"threadId", threadID}})};
}

Call<ThreadGoalClearResponse> clearThreadGoal(const std::string& threadID) {
  return {"thread/goal/clear", callParams({{"threadId", threadID}})};
}

Call<ReviewStartResponse> startReview(const std::string& threadID, const ReviewTarget& target,
                                      const StartReviewParams& params) {
  return {"review/start", callParams({{"threadId", threadID}, {"target", encode(target)}}, params)};
}

Call<ConversationSummaryResponse> getConversationSummary(const GetConversationSummaryParams& params) {
  return {"getConversationSummary", coding::encodeParams(params)};
}

}  // namespace ormel::detail::calls
