#pragma once

#include <array>
#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/SharedTextCodec.h"
#include "OrmelSDK/Input/UserInputTables.h"
#include "OrmelSDK/Items/MessageItems.h"

template <>
struct ormel::coding::RecordTable<ormel::UserMessageItem> {
  static constexpr std::string_view writtenType = "userMessage";
  static constexpr auto fields =
      std::tuple(required<&UserMessageItem::id>("id"), optional<&UserMessageItem::clientID>("clientId", "client_id"),
                 defaulted<&UserMessageItem::content>("content").lossy());
};
ORMEL_DECLARE_CODEC(UserMessageItem)

template <>
struct ormel::coding::RecordTable<ormel::HookPromptFragment> {
  static constexpr auto fields = std::tuple(required<&HookPromptFragment::text>("text"),
                                            required<&HookPromptFragment::hookRunID>("hookRunId", "hook_run_id"));
};
ORMEL_DECLARE_CODEC(HookPromptFragment)

template <>
struct ormel::coding::RecordTable<ormel::HookPromptItem> {
  static constexpr std::string_view writtenType = "hook_prompt";
  static constexpr auto fields =
      std::tuple(required<&HookPromptItem::id>("id"), required<&HookPromptItem::fragments>("fragments"));
};
ORMEL_DECLARE_CODEC(HookPromptItem)

template <>
struct ormel::coding::EnumerationTable<ormel::AgentMessagePhase> {
  static constexpr auto words = closed(std::array{Word{AgentMessagePhase::commentary, "commentary"},
                                                  Word{AgentMessagePhase::finalAnswer, "final_answer"}});
};
ORMEL_DECLARE_ENUMERATION(AgentMessagePhase)

template <>
struct ormel::coding::RecordTable<ormel::AgentMessageQuestion> {
  static constexpr auto fields =
      std::tuple(required<&AgentMessageQuestion::title>("title"), optional<&AgentMessageQuestion::options>("options"));
};
ORMEL_DECLARE_CODEC(AgentMessageQuestion)

template <>
struct ormel::coding::RecordTable<ormel::MemoryCitationEntry> {
  static constexpr auto fields =
      std::tuple(required<&MemoryCitationEntry::path>("path"), required<&MemoryCitationEntry::lineStart>("lineStart"),
                 required<&MemoryCitationEntry::lineEnd>("lineEnd"), required<&MemoryCitationEntry::note>("note"));
};
ORMEL_DECLARE_CODEC(MemoryCitationEntry)

template <>
struct ormel::coding::RecordTable<ormel::MemoryCitation> {
  static constexpr auto fields =
      std::tuple(required<&MemoryCitation::entries>("entries"), required<&MemoryCitation::rolloutIDs>("rolloutIds"));
};
ORMEL_DECLARE_CODEC(MemoryCitation)

template <>
struct ormel::coding::RecordTable<ormel::AgentMessageItem> {
  static constexpr std::string_view writtenType = "agent_message";
  static constexpr auto fields = std::tuple(
      required<&AgentMessageItem::id>("id"), defaulted<&AgentMessageItem::text>("text"),
      optional<&AgentMessageItem::phase>("phase"),
      optional<&AgentMessageItem::memoryCitation>("memoryCitation", "memory_citation"),
      optional<&AgentMessageItem::delivery>("delivery"), optional<&AgentMessageItem::questions>("questions"));
};
ORMEL_DECLARE_CODEC(AgentMessageItem)
