#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/Update.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/Input/ThreadChoices.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelConfigValue.h"

// The optional arguments of the calls that manage threads. One that is given is sent, also when it is empty; one that
// is absent is left to the server.
namespace ormel {

enum class ThreadGoalStatus;
enum class ThreadTurnItemsView;

/// The key by which a list of threads is sorted.
enum class ThreadSortKey { createdAt, updatedAt, recencyAt };
std::ostream& operator<<(std::ostream& stream, const ThreadSortKey& value);

/// The order of a list of threads.
enum class ThreadSortDirection { asc, desc };
std::ostream& operator<<(std::ostream& stream, const ThreadSortDirection& value);

/// The order of a list of turns, or of a turn's items.
enum class ThreadTurnSortDirection { asc, desc };
std::ostream& operator<<(std::ostream& stream, const ThreadTurnSortDirection& value);

/// The origin of a thread.
enum class ThreadSourceKind {
  cli,
  vscode,
  exec,
  appServer,
  subAgent,
  subAgentReview,
  subAgentCompact,
  subAgentThreadSpawn,
  subAgentOther,
  unknown,
};
std::ostream& operator<<(std::ostream& stream, const ThreadSourceKind& value);

using ThreadMetadataStringUpdate = Update<std::string>;
using ThreadGoalTokenBudgetUpdate = Update<std::int64_t>;
using ServiceTierUpdate = Update<ServiceTier>;

/// The changes to the repository state that a thread is noted with.
struct ThreadMetadataGitInfoUpdate {
  ThreadMetadataGitInfoUpdate() {}
  ThreadMetadataStringUpdate branch;
  ThreadMetadataStringUpdate sha;
  ThreadMetadataStringUpdate originURL;
  friend bool operator==(const ThreadMetadataGitInfoUpdate&, const ThreadMetadataGitInfoUpdate&);
};

/// Narrows and orders `listThreads`.
struct ListThreadsParams {
  ListThreadsParams() {}
  /// `nextCursor` of the page before.
  std::optional<std::string> cursor;
  /// The most threads on a page.
  std::optional<std::int64_t> limit;
  std::optional<ThreadSortKey> sortKey;
  std::optional<ThreadSortDirection> sortDirection;
  std::optional<std::vector<std::string>> modelProviders;
  std::optional<std::vector<ThreadSourceKind>> sourceKinds;
  /// Whether the archived threads are listed, and no others.
  std::optional<bool> archived;
  /// Only threads that work in one of these directories.
  std::optional<std::vector<std::string>> cwd;
  /// Whether the server looks in its index alone, and not at the files of the threads.
  std::optional<bool> useStateDBOnly;
  std::optional<std::string> searchTerm;
};

/// Chooses the page of `listLoadedThreads`.
struct ListLoadedThreadsParams {
  ListLoadedThreadsParams() {}
  std::optional<std::string> cursor;
  std::optional<std::int64_t> limit;
};

/// Says how much of a thread `readThread` brings.
struct ReadThreadParams {
  ReadThreadParams() {}
  bool includeTurns = false;
};

/// Choices with which a fork begins, in place of those of the thread it is made from.
struct ForkThreadParams {
  ForkThreadParams() {}
  /// The last turn that the fork takes over; all of them if absent.
  std::optional<std::string> lastTurnID;
  std::optional<std::string> model;
  std::optional<std::string> modelProvider;
  std::optional<ServiceTier> serviceTier;
  std::optional<std::string> workingDirectory;
  std::optional<ApprovalMode> approvalPolicy;
  std::optional<ApprovalsReviewer> approvalsReviewer;
  std::optional<SandboxMode> sandboxMode;
  /// Sent as it is: no feature is switched on besides.
  std::optional<std::map<std::string, OrmelConfigValue>> config;
  std::optional<std::string> baseInstructions;
  std::optional<std::string> developerInstructions;
  /// Whether the fork is kept in memory only.
  std::optional<bool> ephemeral;
  std::optional<ThreadSource> threadSource;
};

/// The choices that a fork made by a control session takes.
struct ForkThreadInSessionParams {
  ForkThreadInSessionParams() {}
  /// The last turn that the fork takes over; all of them if absent.
  std::optional<std::string> lastTurnID;
  /// Whether the fork is kept in memory only.
  std::optional<bool> ephemeral;
};

/// The changes that `updateThreadMetadata` makes.
struct UpdateThreadMetadataParams {
  UpdateThreadMetadataParams() {}
  std::optional<ThreadMetadataGitInfoUpdate> gitInfo;
};

/// The changes that `updateThreadSettings` makes.
struct UpdateThreadSettingsParams {
  UpdateThreadSettingsParams() {}
  std::optional<std::string> workingDirectory;
  std::optional<ApprovalMode> approvalPolicy;
  std::optional<ApprovalsReviewer> approvalsReviewer;
  /// The policy in the server's own words.
  std::optional<JSONValue> sandboxPolicy;
  /// The id of a permission profile.
  std::optional<std::string> permissions;
  std::optional<std::string> model;
  ServiceTierUpdate serviceTier;
  std::optional<ModelReasoningEffort> modelReasoningEffort;
  std::optional<ModelReasoningSummary> modelReasoningSummary;
  std::optional<CollaborationMode> collaborationMode;
  std::optional<Personality> personality;
};

/// Chooses the page of `listThreadTurns`.
struct ListThreadTurnsParams {
  ListThreadTurnsParams() {}
  std::optional<std::string> cursor;
  std::optional<std::int64_t> limit;
  std::optional<ThreadTurnSortDirection> sortDirection;
  /// How much of each turn's items comes with it.
  std::optional<ThreadTurnItemsView> itemsView;
};

/// Chooses the page of `listThreadTurnItems`.
struct ListThreadTurnItemsParams {
  ListThreadTurnItemsParams() {}
  std::optional<std::string> cursor;
  std::optional<std::int64_t> limit;
  std::optional<ThreadTurnSortDirection> sortDirection;
};

/// The goal that `setThreadGoal` sets.
struct SetThreadGoalParams {
  SetThreadGoalParams() {}
  std::optional<std::string> objective;
  std::optional<ThreadGoalStatus> status;
  /// The budget in tokens; cleared, the goal may use any number of them.
  ThreadGoalTokenBudgetUpdate tokenBudget;
};

/// Says where the review of `startReview` takes place.
struct StartReviewParams {
  StartReviewParams() {}
  std::optional<ReviewDelivery> delivery;
};

/// Names the conversation that `getConversationSummary` is about.
struct GetConversationSummaryParams {
  GetConversationSummaryParams() {}
  std::optional<std::string> conversationID;
  /// The file that the conversation is kept in.
  std::optional<std::string> rolloutPath;
};

}  // namespace ormel
