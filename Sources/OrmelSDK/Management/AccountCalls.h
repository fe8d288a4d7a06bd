#pragma once

#include <string>

#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Management/AccountParams.h"
#include "OrmelSDK/Management/Call.h"
#include "OrmelSDK/Records/AccountRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"

/// The calls about accounts and this device's identity, by the names of the operations that perform them.
namespace ormel::detail::calls {

Call<AccountReadResponse> readAccount(const ReadAccountParams& params);
Call<AccountLoginResponse> startParlaneLogin(const StartParlaneLoginParams& params);
Call<AccountLoginResponse> startParlaneLogin(const StartParlaneLoginInSessionParams& params);
Call<AccountLoginResponse> startParlaneDeviceCodeLogin();
Call<AccountLoginResponse> loginWithAPIKey(const std::string& apiKey);
Call<AccountLoginCancelResponse> cancelAccountLogin(const std::string& loginID);
DroppedCall<EmptyRPCResponse> logoutAccount();
Call<AccountRateLimitsResponse> readAccountRateLimits();
Call<AccountRateLimitResetCreditConsumeResponse> consumeAccountRateLimitResetCredit(
    const std::string& idempotencyKey, const ConsumeAccountRateLimitResetCreditInSessionParams& params =
                                           ConsumeAccountRateLimitResetCreditInSessionParams());
Call<AccountTokenUsageResponse> readAccountUsage();
Call<WorkspaceMessagesResponse> readWorkspaceMessages();
Call<AddCreditsNudgeEmailResponse> sendAddCreditsNudgeEmail(const std::string& creditType);
Call<AddCreditsNudgeEmailResponse> sendAddCreditsNudgeEmail(AccountAddCreditsNudgeType creditType);
Call<AuthStatusResponse> getAuthStatus(const GetAuthStatusParams& params);
Call<DeviceKeyCreateResponse> createDeviceKey(const std::string& accountUserID, const std::string& clientID,
                                              const CreateDeviceKeyParams& params);
Call<DeviceKeyCreateResponse> readDeviceKeyPublic(const std::string& keyID);
Call<DeviceKeySignResponse> signDeviceKey(const std::string& keyID, const JSONValue& payload);
Call<FeedbackUploadResponse> uploadFeedback(const std::string& classification, const UploadFeedbackParams& params);
Call<FeedbackUploadResponse> uploadFeedback(const std::string& classification,
                                            const UploadFeedbackInSessionParams& params);

}  // namespace ormel::detail::calls
