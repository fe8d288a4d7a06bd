#include "OrmelSDK/Management/ControlSession.h"
#include "OrmelSDK/Management/ThreadCalls.h"
#include "OrmelSDK/OrmelControlSession.h"

namespace ormel {

namespace calls = detail::calls;

Task<ThreadForkResponse> OrmelControlSession::forkThread(const std::string& threadID,
                                                         const ForkThreadInSessionParams& params) const {
  return detail::perform(session_, calls::forkThread(threadID, params));
}

Task<void> OrmelControlSession::archiveThread(const std::string& threadID) const {
  return detail::perform(session_, calls::archiveThread(threadID));
}

Task<void> OrmelControlSession::deleteThread(const std::string& threadID) const {
  return detail::perform(session_, calls::deleteThread(threadID));
}

Task<ThreadReadResponse> OrmelControlSession::unarchiveThread(const std::string& threadID) const {
  return detail::perform(session_, calls::unarchiveThread(threadID));
}

Task<void> OrmelControlSession::setThreadName(const std::string& threadID, const std::string& name) const {
  return detail::perform(session_, calls::setThreadName(threadID, name));
}

Task<void> OrmelControlSession::compactThread(const std::string& threadID) const {
  return detail::perform(session_, calls::compactThread(threadID));
}

}  // namespace ormel
