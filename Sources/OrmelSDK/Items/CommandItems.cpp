#include "OrmelSDK/Items/CommandItems.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/SharedTextCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::CommandExecutionStatus> {
  static constexpr auto rule = tolerant(CommandExecutionStatus::failed);
  static constexpr Word<CommandExecutionStatus> words[] = {
      {CommandExecutionStatus::inProgress, "in_progress"},
      {CommandExecutionStatus::completed, "completed"},
      {CommandExecutionStatus::failed, "failed"},
      {CommandExecutionStatus::declined, "declined"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::CommandExecutionItem> {
  static constexpr Field fields[] = {
      required<&CommandExecutionItem::id>("id"),
      required<&CommandExecutionItem::command>("command"),
      defaulted<&CommandExecutionItem::workingDirectory>("cwd"),
      optional<&CommandExecutionItem::processID>("process_id", "processId"),
      defaulted<&CommandExecutionItem::commandActions>("command_actions"),
      defaulted<&CommandExecutionItem::aggregatedOutput>("aggregated_output", "aggregatedOutput"),
      optional<&CommandExecutionItem::exitCode>("exit_code", "exitCode"),
      required<&CommandExecutionItem::status>("status"),
      optional<&CommandExecutionItem::durationMilliseconds>("duration_ms"),
  };
};

ORMEL_DEFINE_ENUMERATION(CommandExecutionStatus)
ORMEL_DEFINE_HOT_RECORD(CommandExecutionItem)
