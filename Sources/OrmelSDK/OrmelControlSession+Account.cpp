#include "OrmelSDK/Management/AccountCalls.h"
#include "OrmelSDK/Management/ControlSession.h"
#include "OrmelSDK/OrmelControlSession.h"

namespace ormel {

namespace calls = detail::calls;

Task<AccountReadResponse> OrmelControlSession::readAccount(const ReadAccountParams& params) const {
  return detail::perform(session_, calls::readAccount(params));
}

Task<AccountLoginResponse> OrmelControlSession::startParlaneLogin(
    const StartParlaneLoginInSessionParams& params) const {
  return detail::perform(session_, calls::startParlaneLogin(params));
}

Task<AccountLoginResponse> OrmelControlSession::startParlaneDeviceCodeLogin() const {
  return detail::perform(session_, calls::startParlaneDeviceCodeLogin());
}

Task<AccountLoginResponse> OrmelControlSession::loginWithAPIKey(const std::string& apiKey) const {
  return detail::perform(session_, calls::loginWithAPIKey(apiKey));
}

Task<AccountLoginCancelResponse> OrmelControlSession::cancelAccountLogin(const std::string& loginID) const {
  return detail::perform(session_, calls::cancelAccountLogin(loginID));
}

Task<void> OrmelControlSession::logoutAccount() const { return detail::perform(session_, calls::logoutAccount()); }

Task<AccountRateLimitsResponse> OrmelControlSession::readAccountRateLimits() const {
  return detail::perform(session_, calls::readAccountRateLimits());
}

Task<AccountRateLimitResetCreditConsumeResponse> OrmelControlSession::consumeAccountRateLimitResetCredit(
    const std::string& idempotencyKey, const ConsumeAccountRateLimitResetCreditInSessionParams& params) const {
  return detail::perform(session_, calls::consumeAccountRateLimitResetCredit(idempotencyKey, params));
}

Task<AccountTokenUsageResponse> OrmelControlSession::readAccountUsage() const {
  return detail::perform(session_, calls::readAccountUsage());
}

Task<WorkspaceMessagesResponse> OrmelControlSession::readWorkspaceMessages() const {
  return detail::perform(session_, calls::readWorkspaceMessages());
}

Task<AddCreditsNudgeEmailResponse> OrmelControlSession::sendAddCreditsNudgeEmail(
    AccountAddCreditsNudgeType creditType) const {
  return detail::perform(session_, calls::sendAddCreditsNudgeEmail(creditType));
}

Task<FeedbackUploadResponse> OrmelControlSession::uploadFeedback(const std::string& classification,
                                                                 const UploadFeedbackInSessionParams& params) const {
  return detail::perform(session_, calls::uploadFeedback(classification, params));
}

}  // namespace ormel
