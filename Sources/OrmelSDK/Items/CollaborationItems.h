#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Input/ThreadChoices.h"

namespace ormel {

/// The request that an agent makes of other agents. Its words are compared exactly.
enum class CollabAgentTool {
  spawnAgent,
  sendInput,
  sendMessage,
  followupTask,
  interruptAgent,
  listAgents,
  resumeAgent,
  wait,
  closeAgent,
  unknown
};
std::ostream& operator<<(std::ostream& stream, const CollabAgentTool& value);

/// The status of a call between agents. Read exactly.
enum class CollabAgentToolCallStatus { inProgress, completed, failed, interrupted, unknown };
std::ostream& operator<<(std::ostream& stream, const CollabAgentToolCallStatus& value);

/// The status of an agent. Read exactly.
enum class CollabAgentStatus { pendingInit, running, interrupted, completed, errored, shutdown, notFound, unknown };
std::ostream& operator<<(std::ostream& stream, const CollabAgentStatus& value);

/// The last that is known of an agent.
struct CollabAgentState {
  CollabAgentStatus status = CollabAgentStatus::unknown;
  std::optional<std::string> message;
  friend bool operator==(const CollabAgentState&, const CollabAgentState&);
  friend std::ostream& operator<<(std::ostream& stream, const CollabAgentState& value);
};

/// A call from an agent to others. Its JSON form does not tell its type.
struct CollabAgentToolCallItem {
  std::string id;
  CollabAgentTool tool = CollabAgentTool::unknown;
  CollabAgentToolCallStatus status = CollabAgentToolCallStatus::unknown;
  std::string senderThreadId;
  std::vector<std::string> receiverThreadIds;
  std::optional<std::string> prompt;
  std::optional<std::string> model;
  std::optional<ModelReasoningEffort> reasoningEffort;
  /// The states of the agents, by their threads.
  std::map<std::string, CollabAgentState> agentsStates;
  friend bool operator==(const CollabAgentToolCallItem&, const CollabAgentToolCallItem&);
  friend std::ostream& operator<<(std::ostream& stream, const CollabAgentToolCallItem& value);
};

/// The activity of a sub-agent. Its JSON form is a bare string.
struct SubAgentActivityKind : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const SubAgentActivityKind& started;
  static const SubAgentActivityKind& interacted;
  static const SubAgentActivityKind& interrupted;
  static const SubAgentActivityKind& completed;

  /// Whether it is none of the above; `rawValue` has the server's word.
  bool isUnknown() const {
    return *this != started && *this != interacted && *this != interrupted && *this != completed;
  }
};
std::ostream& operator<<(std::ostream& stream, const SubAgentActivityKind& value);

inline const SubAgentActivityKind& SubAgentActivityKind::started =
    detail::neverDestroyed<SubAgentActivityKind>("started");
inline const SubAgentActivityKind& SubAgentActivityKind::interacted =
    detail::neverDestroyed<SubAgentActivityKind>("interacted");
inline const SubAgentActivityKind& SubAgentActivityKind::interrupted =
    detail::neverDestroyed<SubAgentActivityKind>("interrupted");
inline const SubAgentActivityKind& SubAgentActivityKind::completed =
    detail::neverDestroyed<SubAgentActivityKind>("completed");

/// A sub-agent was started, talked to, interrupted, or came to its end.
struct SubAgentActivityItem {
  std::string id;
  SubAgentActivityKind kind;
  std::optional<std::string> agentThreadID;
  std::optional<std::string> agentPath;
  friend bool operator==(const SubAgentActivityItem&, const SubAgentActivityItem&);
  friend std::ostream& operator<<(std::ostream& stream, const SubAgentActivityItem& value);
};

}  // namespace ormel
