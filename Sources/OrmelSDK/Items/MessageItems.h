#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Input/UserInput.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel {

/// A message of the user.
struct UserMessageItem {
  std::string id;
  /// The id that the sending client gave it.
  std::optional<std::string> clientID;
  /// Parts of a kind that is not known are left out when it is read.
  std::vector<UserInput> content;
  friend bool operator==(const UserMessageItem&, const UserMessageItem&);
  friend std::ostream& operator<<(std::ostream& stream, const UserMessageItem& value);
};

/// A text that a hook put in front of the model.
struct HookPromptFragment {
  std::string text;
  std::string hookRunID;
  friend bool operator==(const HookPromptFragment&, const HookPromptFragment&);
  friend std::ostream& operator<<(std::ostream& stream, const HookPromptFragment& value);
};

/// Texts that hooks put in front of the model.
struct HookPromptItem {
  std::string id;
  std::vector<HookPromptFragment> fragments;
  friend bool operator==(const HookPromptItem&, const HookPromptItem&);
  friend std::ostream& operator<<(std::ostream& stream, const HookPromptItem& value);
};

/// Whether a message is on the way to the answer, or the answer.
enum class AgentMessagePhase { commentary, finalAnswer };
std::ostream& operator<<(std::ostream& stream, const AgentMessagePhase& value);

/// A question that a message puts to the user.
struct AgentMessageQuestion {
  std::string title;
  std::optional<std::vector<std::string>> options;
  friend bool operator==(const AgentMessageQuestion&, const AgentMessageQuestion&);
  friend std::ostream& operator<<(std::ostream& stream, const AgentMessageQuestion& value);
};

/// A place in a remembered file.
struct MemoryCitationEntry {
  std::string path;
  std::int64_t lineStart = 0;
  std::int64_t lineEnd = 0;
  std::string note;
  friend bool operator==(const MemoryCitationEntry&, const MemoryCitationEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const MemoryCitationEntry& value);
};

/// The memories that a message used.
struct MemoryCitation {
  std::vector<MemoryCitationEntry> entries;
  /// The recordings of earlier threads that the memory comes from.
  std::vector<std::string> rolloutIDs;
  friend bool operator==(const MemoryCitation&, const MemoryCitation&);
  friend std::ostream& operator<<(std::ostream& stream, const MemoryCitation& value);
};

/// A message of the agent to the user.
struct AgentMessageItem {
  std::string id;
  /// Grows while the message streams.
  SharedText text;
  std::optional<AgentMessagePhase> phase;
  std::optional<MemoryCitation> memoryCitation;
  std::optional<std::string> delivery;
  std::optional<std::vector<AgentMessageQuestion>> questions;
  friend bool operator==(const AgentMessageItem&, const AgentMessageItem&);
  friend std::ostream& operator<<(std::ostream& stream, const AgentMessageItem& value);
};

}  // namespace ormel
