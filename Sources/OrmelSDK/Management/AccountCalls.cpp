#include "OrmelSDK/Management/AccountCalls.h"

#include "OrmelSDK/Coding/ParamsTable.h"

namespace ormel::detail::calls {

Call<AccountReadResponse> readAccount(const ReadAccountParams& params) {
  return {"account/read", coding::encodeParams(params)};
}

Call<AccountLoginResponse> startParlaneLogin(const StartParlaneLoginParams& params) {
  return {"account/login/start", callParams({{"type", "parlane"}}, params)};
}

Call<AccountLoginResponse> startParlaneLogin(const StartParlaneLoginInSessionParams& params) {
  return {"account/login/start", callParams({{"type", "parlane"}}, params)};
}

Call<AccountLoginResponse> startParlaneDeviceCodeLogin() {
  return {"account/login/start", callParams({{"type", "parlaneDeviceCode"}})};
}

Call<AccountLoginResponse> loginWithAPIKey(const std::string& apiKey) {
  return {"account/login/start", callParams({{"type", "apiKey"}, {"apiKey", apiKey}})};
}

Call<AccountLoginCancelResponse> cancelAccountLogin(const std::string& loginID) {
  return {"account/login/cancel", callParams({{"loginId", loginID}})};
}

DroppedCall<EmptyRPCResponse> logoutAccount() { return {{"account/logout", withoutParams}}; }

Call<AccountRateLimitsResponse> readAccountRateLimits() { return {"account/rateLimits/read", withoutParams}; }

Call<AccountRateLimitResetCreditConsumeResponse> consumeAccountRateLimitResetCredit(
    const std::string& idempotencyKey, const ConsumeAccountRateLimitResetCreditInSessionParams& params) {
  return {"account/rateLimitResetCredit/consume", callParams({{"idempotencyKey", idempotencyKey}}, params)};
}

Call<AccountTokenUsageResponse> readAccountUsage() { return {"account/usage/read", withoutParams}; }

Call<WorkspaceMessagesResponse> readWorkspaceMessages() { return {"account/workspaceMessages/read", withoutParams}; }

Call<AddCreditsNudgeEmailResponse> sendAddCreditsNudgeEmail(const std::string& creditType) {
  return {"account/sendAddCreditsNudgeEmail", callParams({{"creditType", creditType}})};
}

Call<AddCreditsNudgeEmailResponse> sendAddCreditsNudgeEmail(AccountAddCreditsNudgeType creditType) {
  return sendAddCreditsNudgeEmail(std::string(rawValue(creditType)));
}

Call<AuthStatusResponse> getAuthStatus(const GetAuthStatusParams& params) {
  return {"getAuthStatus", coding::encodeParams(params)};
}

Call<DeviceKeyCreateResponse> createDeviceKey(const std::string& accountUserID, const std::string& clientID,
                                              const CreateDeviceKeyParams& params) {
  return {"device/key/create", callParams({{"accountUserId", accountUserID}, {"clientId", clientID}}, params)};
}

Call<DeviceKeyCreateResponse> readDeviceKeyPublic(const std::string& keyID) {
  return {"device/key/public", callParams({{"keyId", keyID}})};
}

Call<DeviceKeySignResponse> signDeviceKey(const std::string& keyID, const JSONValue& payload) {
  return {"device/key/sign", callParams({{"keyId", keyID}, {"payload", payload}})};
}

Call<FeedbackUploadResponse> uploadFeedback(const std::string& classification, const UploadFeedbackParams& params) {
  return {"feedback/upload", callParams({{"classification", classification}}, params)};
}

Call<FeedbackUploadResponse> uploadFeedback(const std::string& classification,
                                            const UploadFeedbackInSessionParams& params) {
  return {"feedback/upload", callParams({{"classification", classification}}, params)};
}

}  // namespace ormel::detail::calls
