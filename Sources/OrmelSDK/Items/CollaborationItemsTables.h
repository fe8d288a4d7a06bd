#pragma once

#include <array>
#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Input/ThreadChoicesTables.h"
#include "OrmelSDK/Items/CollaborationItems.h"

template <>
struct ormel::coding::EnumerationTable<ormel::CollabAgentTool> {
  static constexpr auto words = closed(std::array{
      Word{CollabAgentTool::spawnAgent, "spawnAgent"}, Word{CollabAgentTool::sendInput, "sendInput"},
      Word{CollabAgentTool::sendMessage, "sendMessage"}, Word{CollabAgentTool::followupTask, "followupTask"},
      Word{CollabAgentTool::interruptAgent, "interruptAgent"}, Word{CollabAgentTool::listAgents, "listAgents"},
      Word{CollabAgentTool::resumeAgent, "resumeAgent"}, Word{CollabAgentTool::wait, "wait"},
      Word{CollabAgentTool::closeAgent, "closeAgent"}, Word{CollabAgentTool::unknown, "unknown"}});
};
ORMEL_DECLARE_ENUMERATION(CollabAgentTool)

template <>
struct ormel::coding::EnumerationTable<ormel::CollabAgentToolCallStatus> {
  static constexpr auto words = closed(std::array{Word{CollabAgentToolCallStatus::inProgress, "inProgress"},
                                                  Word{CollabAgentToolCallStatus::completed, "completed"},
                                                  Word{CollabAgentToolCallStatus::failed, "failed"},
                                                  Word{CollabAgentToolCallStatus::interrupted, "interrupted"},
                                                  Word{CollabAgentToolCallStatus::unknown, "unknown"}});
};
ORMEL_DECLARE_ENUMERATION(CollabAgentToolCallStatus)

template <>
struct ormel::coding::EnumerationTable<ormel::CollabAgentStatus> {
  static constexpr auto words = closed(
      std::array{Word{CollabAgentStatus::pendingInit, "pendingInit"}, Word{CollabAgentStatus::running, "running"},
                 Word{CollabAgentStatus::interrupted, "interrupted"}, Word{CollabAgentStatus::completed, "completed"},
                 Word{CollabAgentStatus::errored, "errored"}, Word{CollabAgentStatus::shutdown, "shutdown"},
                 Word{CollabAgentStatus::notFound, "notFound"}, Word{CollabAgentStatus::unknown, "unknown"}});
};
ORMEL_DECLARE_ENUMERATION(CollabAgentStatus)

template <>
struct ormel::coding::RecordTable<ormel::CollabAgentState> {
  static constexpr auto fields =
      std::tuple(required<&CollabAgentState::status>("status"), optional<&CollabAgentState::message>("message"));
};
ORMEL_DECLARE_CODEC(CollabAgentState)

template <>
struct ormel::coding::RecordTable<ormel::CollabAgentToolCallItem> {
  static constexpr auto fields = std::tuple(
      required<&CollabAgentToolCallItem::id>("id"), required<&CollabAgentToolCallItem::tool>("tool"),
      required<&CollabAgentToolCallItem::status>("status"),
      required<&CollabAgentToolCallItem::senderThreadId>("senderThreadId"),
      required<&CollabAgentToolCallItem::receiverThreadIds>("receiverThreadIds"),
      optional<&CollabAgentToolCallItem::prompt>("prompt"), optional<&CollabAgentToolCallItem::model>("model"),
      optional<&CollabAgentToolCallItem::reasoningEffort>("reasoningEffort"),
      required<&CollabAgentToolCallItem::agentsStates>("agentsStates"));
};
ORMEL_DECLARE_CODEC(CollabAgentToolCallItem)

template <>
struct ormel::coding::RecordTable<ormel::SubAgentActivityItem> {
  static constexpr std::string_view writtenType = "subAgentActivity";
  static constexpr auto fields =
      std::tuple(required<&SubAgentActivityItem::id>("id"), required<&SubAgentActivityItem::kind>("kind"),
                 optional<&SubAgentActivityItem::agentThreadID>("agentThreadId", "agent_thread_id"),
                 optional<&SubAgentActivityItem::agentPath>("agentPath", "agent_path"));
};
ORMEL_DECLARE_CODEC(SubAgentActivityItem)
