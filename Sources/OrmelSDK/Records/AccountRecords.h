#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

// The account that the server works for: the sign-in, rate limits, the use of tokens, and messages to its workspace.
// Every type here has a JSON form, except where it says otherwise.
namespace ormel {

/// The limits that a reset credit sets back.
struct RateLimitResetType : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const RateLimitResetType& ormelRateLimits;
};
std::ostream& operator<<(std::ostream& stream, const RateLimitResetType& value);

inline const RateLimitResetType& RateLimitResetType::ormelRateLimits =
    detail::neverDestroyed<RateLimitResetType>("ormelRateLimits");

/// How far a reset credit has been used.
struct RateLimitResetCreditStatus : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const RateLimitResetCreditStatus& available;
  static const RateLimitResetCreditStatus& redeeming;
  static const RateLimitResetCreditStatus& redeemed;
};
std::ostream& operator<<(std::ostream& stream, const RateLimitResetCreditStatus& value);

inline const RateLimitResetCreditStatus& RateLimitResetCreditStatus::available =
    detail::neverDestroyed<RateLimitResetCreditStatus>("available");
inline const RateLimitResetCreditStatus& RateLimitResetCreditStatus::redeeming =
    detail::neverDestroyed<RateLimitResetCreditStatus>("redeeming");
inline const RateLimitResetCreditStatus& RateLimitResetCreditStatus::redeemed =
    detail::neverDestroyed<RateLimitResetCreditStatus>("redeemed");

/// The type of a message to a workspace: a bare string in JSON.
struct WorkspaceMessageType {
  /// The types that this library knows.
  enum class Known { headline, announcement };

  /// A known type, or the server's word for another.
  std::variant<Known, std::string> value = Known::headline;

  WorkspaceMessageType() = default;
  WorkspaceMessageType(Known type) : value(type) {}

  static const WorkspaceMessageType& headline;
  static const WorkspaceMessageType& announcement;
  static WorkspaceMessageType unknown(std::string word);

  friend bool operator==(const WorkspaceMessageType&, const WorkspaceMessageType&);
  friend std::ostream& operator<<(std::ostream& stream, const WorkspaceMessageType& value);
};

inline const WorkspaceMessageType& WorkspaceMessageType::headline =
    detail::neverDestroyed<WorkspaceMessageType>(Known::headline);
inline const WorkspaceMessageType& WorkspaceMessageType::announcement =
    detail::neverDestroyed<WorkspaceMessageType>(Known::announcement);

/// The account that the server is signed in with.
struct OrmelAccount {
  /// The kind of account, in the server's own word.
  std::string type;
  std::optional<std::string> email;
  std::optional<std::string> planType;
  /// Where the credentials come from, in whatever form the server tells it.
  std::optional<JSONValue> credentialSource;
  friend bool operator==(const OrmelAccount&, const OrmelAccount&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelAccount& value);
};

/// The state of the sign-in.
struct AccountReadResponse {
  /// Absent when nobody is signed in.
  std::optional<OrmelAccount> account;
  /// Whether the server's models need an account of Velnor.
  bool requiresVelnorAuth = false;
  friend bool operator==(const AccountReadResponse&, const AccountReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountReadResponse& value);
};

/// A sign-in that has begun.
struct AccountLoginResponse {
  /// The kind of sign-in; it tells which of the other fields matter.
  std::string type;
  /// Identifies the sign-in, to cancel it and to recognise its end.
  std::optional<std::string> loginID;
  /// The page on which the user signs in.
  std::optional<std::string> authURL;
  /// The page on which the user enters `userCode`.
  std::optional<std::string> verificationURL;
  std::optional<std::string> userCode;
  friend bool operator==(const AccountLoginResponse&, const AccountLoginResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountLoginResponse& value);
};

/// The outcome of cancelling a sign-in, in the server's own word.
struct AccountLoginCancelResponse {
  std::string status;
  friend bool operator==(const AccountLoginCancelResponse&, const AccountLoginCancelResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountLoginCancelResponse& value);
};

/// How much of a rate limit is used up in one window of time.
struct RateLimitWindowSnapshot {
  /// 0 to 100.
  double usedPercent = 0;
  /// The length of the window in minutes.
  std::optional<double> windowDurationMins;
  /// When the window begins anew. As the server sends it, not converted.
  std::optional<double> resetsAt;
  friend bool operator==(const RateLimitWindowSnapshot&, const RateLimitWindowSnapshot&);
  friend std::ostream& operator<<(std::ostream& stream, const RateLimitWindowSnapshot& value);
};

/// The credits of an account.
struct CreditsSnapshot {
  bool hasCredits = false;
  bool unlimited = false;
  /// As the server writes it.
  std::optional<std::string> balance;
  friend bool operator==(const CreditsSnapshot&, const CreditsSnapshot&);
  friend std::ostream& operator<<(std::ostream& stream, const CreditsSnapshot& value);
};

/// A limit on what one user may spend.
struct SpendControlLimitSnapshot {
  /// As the server writes it.
  std::string limit;
  /// As the server writes it.
  std::string used;
  /// 0 to 100.
  double remainingPercent = 0;
  /// As the server sends it, not converted.
  double resetsAt = 0;
  friend bool operator==(const SpendControlLimitSnapshot&, const SpendControlLimitSnapshot&);
  friend std::ostream& operator<<(std::ostream& stream, const SpendControlLimitSnapshot& value);
};

/// How much of a rate limit is used up. Any field may be absent.
struct RateLimitSnapshot {
  std::optional<std::string> limitID;
  std::optional<std::string> limitName;
  std::optional<RateLimitWindowSnapshot> primary;
  std::optional<RateLimitWindowSnapshot> secondary;
  std::optional<CreditsSnapshot> credits;
  std::optional<SpendControlLimitSnapshot> individualLimit;
  std::optional<bool> spendControlReached;
  std::optional<std::string> planType;
  /// The limit that was reached, in the server's own word.
  std::optional<std::string> rateLimitReachedType;
  friend bool operator==(const RateLimitSnapshot&, const RateLimitSnapshot&);
  friend std::ostream& operator<<(std::ostream& stream, const RateLimitSnapshot& value);
};

/// A credit that sets rate limits back.
struct RateLimitResetCredit {
  std::string id;
  RateLimitResetType resetType;
  RateLimitResetCreditStatus status;
  /// As the server sends it, not converted.
  std::int64_t grantedAt = 0;
  /// As the server sends it, not converted.
  std::optional<std::int64_t> expiresAt;
  std::optional<std::string> title;
  std::optional<std::string> description;
  friend bool operator==(const RateLimitResetCredit&, const RateLimitResetCredit&);
  friend std::ostream& operator<<(std::ostream& stream, const RateLimitResetCredit& value);
};

/// The reset credits of an account.
struct RateLimitResetCreditsSummary {
  std::int64_t availableCount = 0;
  /// Absent when the server tells only their number.
  std::optional<std::vector<RateLimitResetCredit>> credits;
  friend bool operator==(const RateLimitResetCreditsSummary&, const RateLimitResetCreditsSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const RateLimitResetCreditsSummary& value);
};

/// The rate limits of an account.
struct AccountRateLimitsResponse {
  RateLimitSnapshot rateLimits;
  /// Absent when the server does not tell the limits apart.
  std::optional<std::map<std::string, RateLimitSnapshot>> rateLimitsByLimitID;
  std::optional<RateLimitResetCreditsSummary> rateLimitResetCredits;
  friend bool operator==(const AccountRateLimitsResponse&, const AccountRateLimitsResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountRateLimitsResponse& value);
};

/// The outcome of using a reset credit, in the server's own word.
struct AccountRateLimitResetCreditConsumeResponse {
  std::string outcome;
  friend bool operator==(const AccountRateLimitResetCreditConsumeResponse&,
                         const AccountRateLimitResetCreditConsumeResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountRateLimitResetCreditConsumeResponse& value);
};

/// Figures about the use of an account.
struct AccountTokenUsageSummary {
  std::optional<std::int64_t> lifetimeTokens;
  std::optional<std::int64_t> peakDailyTokens;
  /// The duration of the longest turn, in seconds.
  std::optional<std::int64_t> longestRunningTurnSeconds;
  std::optional<std::int64_t> currentStreakDays;
  std::optional<std::int64_t> longestStreakDays;
  friend bool operator==(const AccountTokenUsageSummary&, const AccountTokenUsageSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountTokenUsageSummary& value);
};

/// The tokens of one day.
struct AccountTokenUsageDailyBucket {
  /// As the server writes it.
  std::string startDate;
  std::int64_t tokens = 0;
  friend bool operator==(const AccountTokenUsageDailyBucket&, const AccountTokenUsageDailyBucket&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountTokenUsageDailyBucket& value);
};

/// How much an account was used.
struct AccountTokenUsageResponse {
  AccountTokenUsageSummary summary;
  /// Absent when the server has no figures by day.
  std::optional<std::vector<AccountTokenUsageDailyBucket>> dailyUsageBuckets;
  friend bool operator==(const AccountTokenUsageResponse&, const AccountTokenUsageResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountTokenUsageResponse& value);
};

/// A message to everybody in a workspace.
struct WorkspaceMessage {
  std::string messageID;
  WorkspaceMessageType messageType;
  std::string messageBody;
  /// As the server sends it, not converted.
  std::optional<double> createdAt;
  /// As the server sends it, not converted.
  std::optional<double> archivedAt;
  friend bool operator==(const WorkspaceMessage&, const WorkspaceMessage&);
  friend std::ostream& operator<<(std::ostream& stream, const WorkspaceMessage& value);
};

/// The messages to a workspace.
struct WorkspaceMessagesResponse {
  /// Whether the workspace has messages at all.
  bool featureEnabled = false;
  std::vector<WorkspaceMessage> messages;
  friend bool operator==(const WorkspaceMessagesResponse&, const WorkspaceMessagesResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const WorkspaceMessagesResponse& value);
};

/// The outcome of the request for more credits, in the server's own word.
struct AddCreditsNudgeEmailResponse {
  std::string status;
  friend bool operator==(const AddCreditsNudgeEmailResponse&, const AddCreditsNudgeEmailResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AddCreditsNudgeEmailResponse& value);
};

/// The sign-in or the plan has changed.
struct AccountUpdatedNotification {
  /// How the user is signed in, in the server's own word.
  std::optional<std::string> authMode;
  std::optional<std::string> planType;
  friend bool operator==(const AccountUpdatedNotification&, const AccountUpdatedNotification&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountUpdatedNotification& value);
};

/// A rate limit has changed.
struct AccountRateLimitsUpdatedNotification {
  RateLimitSnapshot rateLimits;
  friend bool operator==(const AccountRateLimitsUpdatedNotification&, const AccountRateLimitsUpdatedNotification&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountRateLimitsUpdatedNotification& value);
};

/// A sign-in has ended.
struct AccountLoginCompletedNotification {
  /// The sign-in's, as `AccountLoginResponse` gave it.
  std::optional<std::string> loginID;
  bool success = false;
  /// Why it failed.
  std::optional<std::string> error;
  friend bool operator==(const AccountLoginCompletedNotification&, const AccountLoginCompletedNotification&);
  friend std::ostream& operator<<(std::ostream& stream, const AccountLoginCompletedNotification& value);
};

/// A notification about the account. Use `visit` to tell the cases apart. Has no JSON form.
struct OrmelAccountControlNotification {
  std::variant<AccountUpdatedNotification, AccountRateLimitsUpdatedNotification, AccountLoginCompletedNotification>
      value;

  /// The account's part in a notification of the server. Nothing if its method is another, or if its params are absent
  /// or do not decode: a notification that cannot be read is no failure.
  ///
  /// *Thread safety*: may be called from any thread.
  static std::optional<OrmelAccountControlNotification> from(std::string_view method,
                                                             const std::optional<JSONValue>& params);

  friend bool operator==(const OrmelAccountControlNotification&, const OrmelAccountControlNotification&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelAccountControlNotification& value);
};

/// Feedback that was taken.
struct FeedbackUploadResponse {
  std::string threadID;
  friend bool operator==(const FeedbackUploadResponse&, const FeedbackUploadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const FeedbackUploadResponse& value);
};

/// How the server signs its requests. Printing shows everything but the token.
struct AuthStatusResponse {
  /// The method in the server's own word.
  std::optional<std::string> authMethod;
  /// A secret; the library keeps no copy of it. Present only if it was asked for.
  std::optional<std::string> authToken;
  /// Whether the server's models need an account of Velnor.
  std::optional<bool> requiresVelnorAuth;
  friend bool operator==(const AuthStatusResponse&, const AuthStatusResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AuthStatusResponse& value);
};

}  // namespace ormel
