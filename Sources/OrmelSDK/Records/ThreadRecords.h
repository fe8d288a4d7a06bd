#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/Input/ThreadChoices.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Records/ThreadGoal.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"

namespace ormel {

/// The current activity of a thread. The library does not interpret it.
struct OrmelThreadStatus {
  std::string type;
  std::vector<std::string> activeFlags;
  friend bool operator==(const OrmelThreadStatus&, const OrmelThreadStatus&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelThreadStatus& value);
};

/// The state of the repository in which a thread began.
struct OrmelThreadGitInfo {
  std::optional<std::string> sha;
  std::optional<std::string> branch;
  std::optional<std::string> originURL;
  friend bool operator==(const OrmelThreadGitInfo&, const OrmelThreadGitInfo&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelThreadGitInfo& value);
};

/// A thread as the server keeps it. Only `id` is sure to be known; what a server of another version leaves out has its
/// initial value.
struct OrmelThreadRecord {
  std::string id;
  std::string sessionID;
  std::optional<std::string> forkedFromID;
  std::optional<std::string> parentThreadID;
  /// The beginning of the user's first message.
  std::string preview;
  bool ephemeral = false;
  std::string modelProvider;
  /// Seconds since the Unix epoch.
  double createdAt = 0;
  /// Seconds since the Unix epoch.
  double updatedAt = 0;
  /// Seconds since the Unix epoch.
  std::optional<double> recencyAt;
  OrmelThreadStatus status = {"unknown", {}};
  /// The file that the thread is kept in.
  std::optional<std::string> path;
  std::string cwd;
  /// The version of the server that made the thread.
  std::string cliVersion;
  std::optional<JSONValue> source;
  std::optional<std::string> threadSource;
  std::optional<std::string> agentNickname;
  std::optional<std::string> agentRole;
  std::optional<OrmelThreadGitInfo> gitInfo;
  std::optional<std::string> name;
  /// Empty unless they were asked for.
  std::vector<ThreadTurn> turns;
  friend bool operator==(const OrmelThreadRecord&, const OrmelThreadRecord&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelThreadRecord& value);
};

/// A page of threads.
struct ThreadListResponse {
  std::vector<OrmelThreadRecord> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  std::optional<std::string> backwardsCursor;
  friend bool operator==(const ThreadListResponse&, const ThreadListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadListResponse& value);
};

/// One thread.
struct ThreadReadResponse {
  OrmelThreadRecord thread;
  friend bool operator==(const ThreadReadResponse&, const ThreadReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadReadResponse& value);
};

/// A thread made from another, and the choices that it begins with.
struct ThreadForkResponse {
  OrmelThreadRecord thread;
  std::string model;
  std::string modelProvider;
  std::optional<std::string> serviceTier;
  std::string cwd;
  /// The files that instructions were read from.
  std::vector<std::string> instructionSources;
  std::optional<ApprovalMode> approvalPolicy;
  std::optional<ApprovalsReviewer> approvalsReviewer;
  std::optional<JSONValue> sandbox;
  std::optional<ModelReasoningEffort> reasoningEffort;
  friend bool operator==(const ThreadForkResponse&, const ThreadForkResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadForkResponse& value);
};

/// The outcome for a subscription, in the server's own word.
struct ThreadUnsubscribeResponse {
  std::string status;
  friend bool operator==(const ThreadUnsubscribeResponse&, const ThreadUnsubscribeResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadUnsubscribeResponse& value);
};

/// The goal that was set.
struct ThreadGoalSetResponse {
  ThreadGoal goal;
  friend bool operator==(const ThreadGoalSetResponse&, const ThreadGoalSetResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadGoalSetResponse& value);
};

/// A thread's goal.
struct ThreadGoalGetResponse {
  /// Absent when the thread has none.
  std::optional<ThreadGoal> goal;
  friend bool operator==(const ThreadGoalGetResponse&, const ThreadGoalGetResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadGoalGetResponse& value);
};

/// Whether there was a goal to clear.
struct ThreadGoalClearResponse {
  bool cleared = false;
  friend bool operator==(const ThreadGoalClearResponse&, const ThreadGoalClearResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadGoalClearResponse& value);
};

/// The summary of a conversation, whole.
struct ConversationSummaryResponse {
  JSONValue summary;
  friend bool operator==(const ConversationSummaryResponse&, const ConversationSummaryResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ConversationSummaryResponse& value);
};

}  // namespace ormel
