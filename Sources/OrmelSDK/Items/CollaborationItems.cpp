#include "OrmelSDK/Items/CollaborationItems.h"

#include <string_view>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::CollabAgentTool> {
  static constexpr auto rule = closed;
  static constexpr Word<CollabAgentTool> words[] = {
      {CollabAgentTool::spawnAgent, "spawnAgent"},         {CollabAgentTool::sendInput, "sendInput"},
      {CollabAgentTool::sendMessage, "sendMessage"},       {CollabAgentTool::followupTask, "followupTask"},
      {CollabAgentTool::interruptAgent, "interruptAgent"}, {CollabAgentTool::listAgents, "listAgents"},
      {CollabAgentTool::resumeAgent, "resumeAgent"},       {CollabAgentTool::wait, "wait"},
      {CollabAgentTool::closeAgent, "closeAgent"},         {CollabAgentTool::unknown, "unknown"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::CollabAgentToolCallStatus> {
  static constexpr auto rule = closed;
  static constexpr Word<CollabAgentToolCallStatus> words[] = {
      {CollabAgentToolCallStatus::inProgress, "inProgress"}, {CollabAgentToolCallStatus::completed, "completed"},
      {CollabAgentToolCallStatus::failed, "failed"},         {CollabAgentToolCallStatus::interrupted, "interrupted"},
      {CollabAgentToolCallStatus::unknown, "unknown"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::CollabAgentStatus> {
  static constexpr auto rule = closed;
  static constexpr Word<CollabAgentStatus> words[] = {
      {CollabAgentStatus::pendingInit, "pendingInit"}, {CollabAgentStatus::running, "running"},
      {CollabAgentStatus::interrupted, "interrupted"}, {CollabAgentStatus::completed, "completed"},
      {CollabAgentStatus::errored, "errored"},         {CollabAgentStatus::shutdown, "shutdown"},
      {CollabAgentStatus::notFound, "notFound"},       {CollabAgentStatus::unknown, "unknown"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::CollabAgentState> {
  static constexpr Field fields[] = {
      required<&CollabAgentState::status>("status"),
      optional<&CollabAgentState::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::CollabAgentToolCallItem> {
  static constexpr Field fields[] = {
      required<&CollabAgentToolCallItem::id>("id"),
      required<&CollabAgentToolCallItem::tool>("tool"),
      required<&CollabAgentToolCallItem::status>("status"),
      required<&CollabAgentToolCallItem::senderThreadId>("senderThreadId"),
      required<&CollabAgentToolCallItem::receiverThreadIds>("receiverThreadIds"),
      optional<&CollabAgentToolCallItem::prompt>("prompt"),
      optional<&CollabAgentToolCallItem::model>("model"),
      optional<&CollabAgentToolCallItem::reasoningEffort>("reasoningEffort"),
      required<&CollabAgentToolCallItem::agentsStates>("agentsStates"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SubAgentActivityItem> {
  static constexpr std::string_view writtenType = "subAgentActivity";
  static constexpr Field fields[] = {
      required<&SubAgentActivityItem::id>("id"),
      required<&SubAgentActivityItem::kind>("kind"),
      optional<&SubAgentActivityItem::agentThreadID>("agentThreadId", "agent_thread_id"),
      optional<&SubAgentActivityItem::agentPath>("agentPath", "agent_path"),
  };
};

ORMEL_DEFINE_ENUMERATION(CollabAgentTool)
ORMEL_DEFINE_ENUMERATION(CollabAgentToolCallStatus)
ORMEL_DEFINE_ENUMERATION(CollabAgentStatus)
ORMEL_DEFINE_HOT_RECORD(CollabAgentState)
ORMEL_DEFINE_HOT_RECORD(CollabAgentToolCallItem)
ORMEL_DEFINE_VOCABULARY(SubAgentActivityKind)
ORMEL_DEFINE_HOT_RECORD(SubAgentActivityItem)
