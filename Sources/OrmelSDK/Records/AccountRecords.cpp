#include "OrmelSDK/Records/AccountRecords.h"

#include <ostream>
#include <utility>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::WorkspaceMessageType::Known> {
  static constexpr auto rule = closed;
  static constexpr Word<WorkspaceMessageType::Known> words[] = {
      {WorkspaceMessageType::Known::headline, "headline"},
      {WorkspaceMessageType::Known::announcement, "announcement"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::OrmelAccount> {
  static constexpr Field fields[] = {
      required<&OrmelAccount::type>("type"),
      optional<&OrmelAccount::email>("email"),
      optional<&OrmelAccount::planType>("planType"),
      optional<&OrmelAccount::credentialSource>("credentialSource"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountReadResponse> {
  static constexpr Field fields[] = {
      optional<&AccountReadResponse::account>("account"),
      required<&AccountReadResponse::requiresVelnorAuth>("requiresVelnorAuth"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountLoginResponse> {
  static constexpr Field fields[] = {
      required<&AccountLoginResponse::type>("type"),
      optional<&AccountLoginResponse::loginID>("loginId"),
      optional<&AccountLoginResponse::authURL>("authUrl"),
      optional<&AccountLoginResponse::verificationURL>("verificationUrl"),
      optional<&AccountLoginResponse::userCode>("userCode"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountLoginCancelResponse> {
  static constexpr Field fields[] = {
      required<&AccountLoginCancelResponse::status>("status"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::RateLimitWindowSnapshot> {
  static constexpr Field fields[] = {
      required<&RateLimitWindowSnapshot::usedPercent>("usedPercent"),
      optional<&RateLimitWindowSnapshot::windowDurationMins>("windowDurationMins"),
      optional<&RateLimitWindowSnapshot::resetsAt>("resetsAt"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::CreditsSnapshot> {
  static constexpr Field fields[] = {
      required<&CreditsSnapshot::hasCredits>("hasCredits"),
      required<&CreditsSnapshot::unlimited>("unlimited"),
      optional<&CreditsSnapshot::balance>("balance"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SpendControlLimitSnapshot> {
  static constexpr Field fields[] = {
      required<&SpendControlLimitSnapshot::limit>("limit"),
      required<&SpendControlLimitSnapshot::used>("used"),
      required<&SpendControlLimitSnapshot::remainingPercent>("remainingPercent"),
      required<&SpendControlLimitSnapshot::resetsAt>("resetsAt"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::RateLimitSnapshot> {
  static constexpr Field fields[] = {
      optional<&RateLimitSnapshot::limitID>("limitId"),
      optional<&RateLimitSnapshot::limitName>("limitName"),
      optional<&RateLimitSnapshot::primary>("primary"),
      optional<&RateLimitSnapshot::secondary>("secondary"),
      optional<&RateLimitSnapshot::credits>("credits"),
      optional<&RateLimitSnapshot::individualLimit>("individualLimit"),
      optional<&RateLimitSnapshot::spendControlReached>("spendControlReached"),
      optional<&RateLimitSnapshot::planType>("planType"),
      optional<&RateLimitSnapshot::rateLimitReachedType>("rateLimitReachedType"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::RateLimitResetCredit> {
  static constexpr Field fields[] = {
      required<&RateLimitResetCredit::id>("id"),
      required<&RateLimitResetCredit::resetType>("resetType"),
      required<&RateLimitResetCredit::status>("status"),
      required<&RateLimitResetCredit::grantedAt>("grantedAt"),
      optional<&RateLimitResetCredit::expiresAt>("expiresAt"),
      optional<&RateLimitResetCredit::title>("title"),
      optional<&RateLimitResetCredit::description>("description"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::RateLimitResetCreditsSummary> {
  static constexpr Field fields[] = {
      required<&RateLimitResetCreditsSummary::availableCount>("availableCount"),
      optional<&RateLimitResetCreditsSummary::credits>("credits"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountRateLimitsResponse> {
  static constexpr Field fields[] = {
      required<&AccountRateLimitsResponse::rateLimits>("rateLimits"),
      optional<&AccountRateLimitsResponse::rateLimitsByLimitID>("rateLimitsByLimitId"),
      optional<&AccountRateLimitsResponse::rateLimitResetCredits>("rateLimitResetCredits"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountRateLimitResetCreditConsumeResponse> {
  static constexpr Field fields[] = {
      required<&AccountRateLimitResetCreditConsumeResponse::outcome>("outcome"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountTokenUsageSummary> {
  static constexpr Field fields[] = {
      optional<&AccountTokenUsageSummary::lifetimeTokens>("lifetimeTokens"),
      optional<&AccountTokenUsageSummary::peakDailyTokens>("peakDailyTokens"),
      optional<&AccountTokenUsageSummary::longestRunningTurnSeconds>("longestRunningTurnSec"),
      optional<&AccountTokenUsageSummary::currentStreakDays>("currentStreakDays"),
      optional<&AccountTokenUsageSummary::longestStreakDays>("longestStreakDays"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountTokenUsageDailyBucket> {
  static constexpr Field fields[] = {
      required<&AccountTokenUsageDailyBucket::startDate>("startDate"),
      required<&AccountTokenUsageDailyBucket::tokens>("tokens"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountTokenUsageResponse> {
  static constexpr Field fields[] = {
      required<&AccountTokenUsageResponse::summary>("summary"),
      optional<&AccountTokenUsageResponse::dailyUsageBuckets>("dailyUsageBuckets"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::WorkspaceMessage> {
  static constexpr Field fields[] = {
      required<&WorkspaceMessage::messageID>("messageId"),     required<&WorkspaceMessage::messageType>("messageType"),
      required<&WorkspaceMessage::messageBody>("messageBody"), optional<&WorkspaceMessage::createdAt>("createdAt"),
      optional<&WorkspaceMessage::archivedAt>("archivedAt"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::WorkspaceMessagesResponse> {
  static constexpr Field fields[] = {
      required<&WorkspaceMessagesResponse::featureEnabled>("featureEnabled"),
      required<&WorkspaceMessagesResponse::messages>("messages"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AddCreditsNudgeEmailResponse> {
  static constexpr Field fields[] = {
      required<&AddCreditsNudgeEmailResponse::status>("status"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountUpdatedNotification> {
  static constexpr Field fields[] = {
      optional<&AccountUpdatedNotification::authMode>("authMode"),
      optional<&AccountUpdatedNotification::planType>("planType"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountRateLimitsUpdatedNotification> {
  static constexpr Field fields[] = {
      required<&AccountRateLimitsUpdatedNotification::rateLimits>("rateLimits"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AccountLoginCompletedNotification> {
  static constexpr Field fields[] = {
      optional<&AccountLoginCompletedNotification::loginID>("loginId"),
      required<&AccountLoginCompletedNotification::success>("success"),
      optional<&AccountLoginCompletedNotification::error>("error"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FeedbackUploadResponse> {
  static constexpr Field fields[] = {
      required<&FeedbackUploadResponse::threadID>("threadId"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AuthStatusResponse> {
  static constexpr Field fields[] = {
      optional<&AuthStatusResponse::authMethod>("authMethod"),
      optional<&AuthStatusResponse::authToken>("authToken"),
      optional<&AuthStatusResponse::requiresVelnorAuth>("requiresVelnorAuth"),
  };
};

namespace ormel::coding {

namespace {

void decodeMessageType(WorkspaceMessageType& into, const JSONValue& value, const CodingPath& path) {
  const std::string_view word = textOf(value, path);
  if (const auto known = enumerationCase<WorkspaceMessageType::Known>(word)) {
    into.value = *known;
  } else {
    into.value = std::string(word);
  }
}

JSONValue encodeMessageType(const WorkspaceMessageType& type) {
  if (const auto* known = std::get_if<WorkspaceMessageType::Known>(&type.value)) return enumerationWord(*known);
  return std::get<std::string>(type.value);
}

// Printed text ends up in logs.
JSONValue encodeWithoutToken(const AuthStatusResponse& status) {
  AuthStatusResponse shown = status;
  if (shown.authToken && !shown.authToken->empty()) shown.authToken = "<secret>";
  return encodeFromTable(shown);
}

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_WORDS(WorkspaceMessageType::Known)
ORMEL_DEFINE_EQUALITY(WorkspaceMessageType)
ORMEL_DEFINE_EQUALITY(OrmelAccountControlNotification)
ORMEL_DEFINE_CODEC_BY(WorkspaceMessageType, decodeMessageType, encodeMessageType)
ORMEL_DEFINE_VOCABULARY(RateLimitResetType)
ORMEL_DEFINE_VOCABULARY(RateLimitResetCreditStatus)
ORMEL_DEFINE_RECORD(OrmelAccount)
ORMEL_DEFINE_RECORD(AccountReadResponse)
ORMEL_DEFINE_RECORD(AccountLoginResponse)
ORMEL_DEFINE_RECORD(AccountLoginCancelResponse)
ORMEL_DEFINE_RECORD(RateLimitWindowSnapshot)
ORMEL_DEFINE_RECORD(CreditsSnapshot)
ORMEL_DEFINE_RECORD(SpendControlLimitSnapshot)
ORMEL_DEFINE_RECORD(RateLimitSnapshot)
ORMEL_DEFINE_RECORD(RateLimitResetCredit)
ORMEL_DEFINE_RECORD(RateLimitResetCreditsSummary)
ORMEL_DEFINE_RECORD(AccountRateLimitsResponse)
ORMEL_DEFINE_RECORD(AccountRateLimitResetCreditConsumeResponse)
ORMEL_DEFINE_RECORD(AccountTokenUsageSummary)
ORMEL_DEFINE_RECORD(AccountTokenUsageDailyBucket)
ORMEL_DEFINE_RECORD(AccountTokenUsageResponse)
ORMEL_DEFINE_RECORD(WorkspaceMessage)
ORMEL_DEFINE_RECORD(WorkspaceMessagesResponse)
ORMEL_DEFINE_RECORD(AddCreditsNudgeEmailResponse)
ORMEL_DEFINE_RECORD(AccountUpdatedNotification)
ORMEL_DEFINE_RECORD(AccountRateLimitsUpdatedNotification)
ORMEL_DEFINE_RECORD(AccountLoginCompletedNotification)
ORMEL_DEFINE_RECORD(FeedbackUploadResponse)
ORMEL_DEFINE_CASE(AuthStatusResponse)
template ormel::AuthStatusResponse ormel::decode<ormel::AuthStatusResponse>(const JSONValue&);
template ormel::JSONValue ormel::encode<ormel::AuthStatusResponse>(const AuthStatusResponse&);

namespace ormel {

namespace {

template <typename Notification>
std::optional<OrmelAccountControlNotification> readAccountNotification(const JSONValue& params) {
  try {
    // Fails for a value that no server can have sent, since it cannot be written.
    (void)params.encode();
    return OrmelAccountControlNotification{decode<Notification>(params)};
  } catch (const Error&) {
    return std::nullopt;
  }
}

}  // namespace

WorkspaceMessageType WorkspaceMessageType::unknown(std::string word) {
  WorkspaceMessageType type;
  type.value = std::move(word);
  return type;
}

std::optional<OrmelAccountControlNotification> OrmelAccountControlNotification::from(
    std::string_view method, const std::optional<JSONValue>& params) {
  if (!params) return std::nullopt;
  if (method == "account/updated") return readAccountNotification<AccountUpdatedNotification>(*params);
  if (method == "account/rateLimits/updated") {
    return readAccountNotification<AccountRateLimitsUpdatedNotification>(*params);
  }
  if (method == "account/login/completed") return readAccountNotification<AccountLoginCompletedNotification>(*params);
  return std::nullopt;
}

std::ostream& operator<<(std::ostream& stream, const OrmelAccountControlNotification& value) {
  return visit(value, [&](const auto& notification) -> std::ostream& { return stream << notification; });
}

std::ostream& operator<<(std::ostream& stream, const AuthStatusResponse& value) {
  return stream << "AuthStatusResponse " << coding::encodeWithoutToken(value);
}

}  // namespace ormel
