#include "OrmelSDK/Management/AccountCalls.h"
#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Ormel.h"

namespace ormel {

namespace calls = detail::calls;

Task<AccountReadResponse> Ormel::readAccount(const ReadAccountParams& params) const {
  return detail::perform(performer(), calls::readAccount(params));
}

Task<AccountLoginResponse> Ormel::startParlaneLogin(const StartParlaneLoginParams& params) const {
  return detail::perform(performer(), calls::startParlaneLogin(params));
}

Task<AccountLoginResponse> Ormel::loginWithAPIKey(const std::string& apiKey) const {
  return detail::perform(performer(), calls::loginWithAPIKey(apiKey));
}

Task<AccountLoginCancelResponse> Ormel::cancelAccountLogin(const std::string& loginID) const {
  return detail::perform(performer(), calls::cancelAccountLogin(loginID));
}

Task<void> Ormel::logoutAccount() const { return detail::perform(performer(), calls::logoutAccount()); }

Task<AccountRateLimitsResponse> Ormel::readAccountRateLimits() const {
  return detail::perform(performer(), calls::readAccountRateLimits());
}

Task<AccountRateLimitResetCreditConsumeResponse> Ormel::consumeAccountRateLimitResetCredit(
    const std::string& idempotencyKey) const {
  return detail::perform(performer(), calls::consumeAccountRateLimitResetCredit(idempotencyKey));
}

Task<AccountTokenUsageResponse> Ormel::readAccountUsage() const {
  return detail::perform(performer(), calls::readAccountUsage());
}

Task<WorkspaceMessagesResponse> Ormel::readWorkspaceMessages() const {
  return detail::perform(performer(), calls::readWorkspaceMessages());
}

Task<AddCreditsNudgeEmailResponse> Ormel::sendAddCreditsNudgeEmail(const std::string& creditType) const {
  return detail::perform(performer(), calls::sendAddCreditsNudgeEmail(creditType));
}

Task<AuthStatusResponse> Ormel::getAuthStatus(const GetAuthStatusParams& params) const {
  return detail::perform(performer(), calls::getAuthStatus(params));
}

Task<DeviceKeyCreateResponse> Ormel::createDeviceKey(const std::string& accountUserID, const std::string& clientID,
                                                     const CreateDeviceKeyParams& params) const {
  return detail::perform(performer(), calls::createDeviceKey(accountUserID, clientID, params));
}

Task<DeviceKeyCreateResponse> Ormel::readDeviceKeyPublic(const std::string& keyID) const {
  return detail::perform(performer(), calls::readDeviceKeyPublic(keyID));
}

Task<DeviceKeySignResponse> Ormel::signDeviceKey(const std::string& keyID, const JSONValue& payload) const {
  return detail::perform(performer(), calls::signDeviceKey(keyID, payload));
}

Task<FeedbackUploadResponse> Ormel::uploadFeedback(const std::string& classification,
                                                   const UploadFeedbackParams& params) const {
  return detail::perform(performer(), calls::uploadFeedback(classification, params));
}

}  // namespace ormel
