#include "OrmelSDK/Items/MessageItems.h"

#include <string_view>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/SharedTextCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::UserMessageItem> {
  static constexpr std::string_view writtenType = "userMessage";
  static constexpr Field fields[] = {
      required<&UserMessageItem::id>("id"),
      optional<&UserMessageItem::clientID>("clientId", "client_id"),
      defaulted<&UserMessageItem::content>("content").lossy(),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HookPromptFragment> {
  static constexpr Field fields[] = {
      required<&HookPromptFragment::text>("text"),
      required<&HookPromptFragment::hookRunID>("hookRunId", "hook_run_id"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HookPromptItem> {
  static constexpr std::string_view writtenType = "hook_prompt";
  static constexpr Field fields[] = {
      required<&HookPromptItem::id>("id"),
      required<&HookPromptItem::fragments>("fragments"),
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::AgentMessagePhase> {
  static constexpr auto rule = closed;
  static constexpr Word<AgentMessagePhase> words[] = {
      {AgentMessagePhase::commentary, "commentary"},
      {AgentMessagePhase::finalAnswer, "final_answer"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AgentMessageQuestion> {
  static constexpr Field fields[] = {
      required<&AgentMessageQuestion::title>("title"),
      optional<&AgentMessageQuestion::options>("options"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::MemoryCitationEntry> {
  static constexpr Field fields[] = {
      required<&MemoryCitationEntry::path>("path"),
      required<&MemoryCitationEntry::lineStart>("lineStart"),
      required<&MemoryCitationEntry::lineEnd>("lineEnd"),
      required<&MemoryCitationEntry::note>("note"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::MemoryCitation> {
  static constexpr Field fields[] = {
      required<&MemoryCitation::entries>("entries"),
      required<&MemoryCitation::rolloutIDs>("rolloutIds"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AgentMessageItem> {
  static constexpr std::string_view writtenType = "agent_message";
  static constexpr Field fields[] = {
      required<&AgentMessageItem::id>("id"),
      defaulted<&AgentMessageItem::text>("text"),
      optional<&AgentMessageItem::phase>("phase"),
      optional<&AgentMessageItem::memoryCitation>("memoryCitation", "memory_citation"),
      optional<&AgentMessageItem::delivery>("delivery"),
      optional<&AgentMessageItem::questions>("questions"),
  };
};

ORMEL_DEFINE_HOT_RECORD(UserMessageItem)
ORMEL_DEFINE_HOT_RECORD(HookPromptFragment)
ORMEL_DEFINE_HOT_RECORD(HookPromptItem)
ORMEL_DEFINE_ENUMERATION(AgentMessagePhase)
ORMEL_DEFINE_HOT_RECORD(AgentMessageQuestion)
ORMEL_DEFINE_HOT_RECORD(MemoryCitationEntry)
ORMEL_DEFINE_HOT_RECORD(MemoryCitation)
ORMEL_DEFINE_HOT_RECORD(AgentMessageItem)
