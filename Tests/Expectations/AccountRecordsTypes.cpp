#include "Expectations/Registry.h"
#include "OrmelSDK/Records/AccountRecords.h"

namespace ormel::tests {

void registerAccountRecords(Registry& registry) {
  registry.vocabulary<RateLimitResetType>({{"ormelRateLimits", RateLimitResetType::ormelRateLimits}});
  registry.vocabulary<RateLimitResetCreditStatus>({{"available", RateLimitResetCreditStatus::available},
                                                   {"redeeming", RateLimitResetCreditStatus::redeeming},
                                                   {"redeemed", RateLimitResetCreditStatus::redeemed}});
  registry.vocabulary<WorkspaceMessageType>(
      {{"headline", WorkspaceMessageType::headline}, {"announcement", WorkspaceMessageType::announcement}});
  registry.record<OrmelAccount>();
  registry.record<AccountReadResponse>();
  registry.record<AccountLoginResponse>();
  registry.record<AccountLoginCancelResponse>();
  registry.record<RateLimitWindowSnapshot>();
  registry.record<CreditsSnapshot>();
  registry.record<SpendControlLimitSnapshot>();
  registry.record<RateLimitSnapshot>();
  registry.record<RateLimitResetCredit>();
  registry.record<RateLimitResetCreditsSummary>();
  registry.record<AccountRateLimitsResponse>();
  registry.record<AccountRateLimitResetCreditConsumeResponse>();
  registry.record<AccountTokenUsageSummary>();
  registry.record<AccountTokenUsageDailyBucket>();
  registry.record<AccountTokenUsageResponse>();
  registry.record<WorkspaceMessage>();
  registry.record<WorkspaceMessagesResponse>();
  registry.record<AddCreditsNudgeEmailResponse>();
  registry.record<AccountUpdatedNotification>();
  registry.record<AccountRateLimitsUpdatedNotification>();
  registry.record<AccountLoginCompletedNotification>();
  registry.record<FeedbackUploadResponse>();
  registry.record<AuthStatusResponse>();
}

}  // namespace ormel::tests
