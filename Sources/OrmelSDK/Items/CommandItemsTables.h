#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/SharedTextCodec.h"
#include "OrmelSDK/Items/CommandItems.h"

template <>
struct ormel::coding::EnumerationTable<ormel::CommandExecutionStatus> {
  static constexpr auto words =
      tolerant(CommandExecutionStatus::failed, std::array{Word{CommandExecutionStatus::inProgress, "in_progress"},
                                                          Word{CommandExecutionStatus::completed, "completed"},
                                                          Word{CommandExecutionStatus::failed, "failed"},
                                                          Word{CommandExecutionStatus::declined, "declined"}});
};
ORMEL_DECLARE_ENUMERATION(CommandExecutionStatus)

template <>
struct ormel::coding::RecordTable<ormel::CommandExecutionItem> {
  static constexpr auto fields =
      std::tuple(required<&CommandExecutionItem::id>("id"), required<&CommandExecutionItem::command>("command"),
                 defaulted<&CommandExecutionItem::workingDirectory>("cwd"),
                 optional<&CommandExecutionItem::processID>("process_id", "processId"),
                 defaulted<&CommandExecutionItem::commandActions>("command_actions"),
                 defaulted<&CommandExecutionItem::aggregatedOutput>("aggregated_output", "aggregatedOutput"),
                 optional<&CommandExecutionItem::exitCode>("exit_code", "exitCode"),
                 required<&CommandExecutionItem::status>("status"),
                 optional<&CommandExecutionItem::durationMilliseconds>("duration_ms"));
};
ORMEL_DECLARE_CODEC(CommandExecutionItem)
