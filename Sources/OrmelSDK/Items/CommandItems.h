#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel {

/// The status of a command. Read without regard to case, "_" and "-"; a word that is not known is `failed`.
enum class CommandExecutionStatus { inProgress, completed, failed, declined };
std::ostream& operator<<(std::ostream& stream, const CommandExecutionStatus& value);

/// A command that the agent runs. Its JSON form does not tell its type.
struct CommandExecutionItem {
  std::string id;
  /// As one line for a shell.
  std::string command;
  std::string workingDirectory;
  std::optional<std::string> processID;
  /// The command's actions, in the server's own words.
  std::vector<JSONValue> commandActions;
  /// Both output streams; grows while the command runs.
  SharedText aggregatedOutput;
  std::optional<std::int64_t> exitCode;
  CommandExecutionStatus status = CommandExecutionStatus::failed;
  std::optional<std::int64_t> durationMilliseconds;
  friend bool operator==(const CommandExecutionItem&, const CommandExecutionItem&);
  friend std::ostream& operator<<(std::ostream& stream, const CommandExecutionItem& value);
};

}  // namespace ormel
