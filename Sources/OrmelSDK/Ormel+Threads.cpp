#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Management/ThreadCalls.h"
#include "OrmelSDK/Management/ThreadTurnItems.h"
#include "OrmelSDK/Ormel.h"

namespace ormel {

namespace calls = detail::calls;

Task<ThreadListResponse> Ormel::listThreads(const ListThreadsParams& params) const {
  return detail::perform(performer(), calls::listThreads(params));
}

Task<ThreadListResponse> Ormel::listLoadedThreads(const ListLoadedThreadsParams& params) const {
  return detail::perform(performer(), calls::listLoadedThreads(params));
}

Task<ThreadReadResponse> Ormel::readThread(const std::string& threadID, const ReadThreadParams& params) const {
  return detail::perform(performer(), calls::readThread(threadID, params));
}

Task<ThreadForkResponse> Ormel::forkThread(const std::string& threadID, const ForkThreadParams& params) const {
  return detail::perform(performer(), calls::forkThread(threadID, params));
}

Task<void> Ormel::archiveThread(const std::string& threadID) const {
  return detail::perform(performer(), calls::archiveThread(threadID));
}

Task<void> Ormel::deleteThread(const std::string& threadID) const {
  return detail::perform(performer(), calls::deleteThread(threadID));
}

Task<ThreadReadResponse> Ormel::unarchiveThread(const std::string& threadID) const {
  return detail::perform(performer(), calls::unarchiveThread(threadID));
}

Task<ThreadUnsubscribeResponse> Ormel::unsubscribeThread(const std::string& threadID) const {
  return detail::perform(performer(), calls::unsubscribeThread(threadID));
}

Task<void> Ormel::setThreadName(const std::string& threadID, const std::string& name) const {
  return detail::perform(performer(), calls::setThreadName(threadID, name));
}

Task<void> Ormel::startThreadCompaction(const std::string& threadID) const {
  return detail::perform(performer(), calls::compactThread(threadID));
}

Task<void> Ormel::runThreadShellCommand(const std::string& threadID, const std::string& command) const {
  return detail::perform(performer(), calls::runThreadShellCommand(threadID, command));
}

Task<void> Ormel::approveGuardianDeniedAction(const std::string& threadID, const JSONValue& event) const {
  return detail::perform(performer(), calls::approveGuardianDeniedAction(threadID, event));
}

Task<ThreadReadResponse> Ormel::updateThreadMetadata(const std::string& threadID,
                                                     const UpdateThreadMetadataParams& params) const {
  return detail::perform(performer(), calls::updateThreadMetadata(threadID, params));
}

Task<ThreadSettingsUpdateResponse> Ormel::updateThreadSettings(const std::string& threadID,
                                                               const UpdateThreadSettingsParams& params) const {
  return detail::perform(performer(), calls::updateThreadSettings(threadID, params));
}

Task<void> Ormel::injectThreadItems(const std::string& threadID, const std::vector<JSONValue>& items) const {
  return detail::perform(performer(), calls::injectThreadItems(threadID, items));
}

Task<ThreadTurnsListResponse> Ormel::listThreadTurns(const std::string& threadID,
                                                     const ListThreadTurnsParams& params) const {
  return detail::perform(performer(), calls::listThreadTurns(threadID, params));
}

Task<ThreadTurnItemsListResponse> Ormel::listThreadTurnItems(const std::string& threadID, const std::string& turnID,
                                                             const ListThreadTurnItemsParams& params) const {
  return detail::listThreadTurnItems(performer_, threadID, turnID, params);
}

Task<ThreadGoalSetResponse> Ormel::setThreadGoal(const std::string& threadID, const SetThreadGoalParams& params) const {
  return detail::perform(performer(), calls::setThreadGoal(threadID, params));
}

Task<ThreadGoalGetResponse> Ormel::readThreadGoal(const std::string& threadID) const {
  return detail::perform(performer(), calls::readThreadGoal(threadID));
}

Task<ThreadGoalClearResponse> Ormel::clearThreadGoal(const std::string& threadID) const {
  return detail::perform(performer(), calls::clearThreadGoal(threadID));
}

Task<ReviewStartResponse> Ormel::startReview(const std::string& threadID, const ReviewTarget& target,
                                             const StartReviewParams& params) const {
  return detail::perform(performer(), calls::startReview(threadID, target, params));
}

Task<ConversationSummaryResponse> Ormel::getConversationSummary(const GetConversationSummaryParams& params) const {
  return detail::perform(performer(), calls::getConversationSummary(params));
}

}  // namespace ormel
