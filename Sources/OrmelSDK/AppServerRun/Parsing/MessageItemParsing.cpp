#include "OrmelSDK/AppServerRun/Parsing/MessageItemParsing.h"

#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

namespace {

std::optional<HookPromptFragment> hookPromptFragment(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  auto text = textMember(*object, {"text"});
  auto hookRunID = textMember(*object, {"hookRunId", "hook_run_id"});
  if (!text || !hookRunID) return std::nullopt;
  return HookPromptFragment{*std::move(text), *std::move(hookRunID)};
}

std::optional<MemoryCitationEntry> memoryCitationEntry(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  auto path = textMember(*object, {"path"});
  const auto lineStart = firstMember(*object, {"lineStart", "line_start"}, parseOptionalInt);
  const auto lineEnd = firstMember(*object, {"lineEnd", "line_end"}, parseOptionalInt);
  auto note = textMember(*object, {"note"});
  if (!path || !lineStart || !lineEnd || !note) return std::nullopt;
  return MemoryCitationEntry{*std::move(path), *lineStart, *lineEnd, *std::move(note)};
}

std::optional<AgentMessageQuestion> agentMessageQuestion(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  auto title = textMember(*object, {"title"});
  if (!title) return std::nullopt;
  AgentMessageQuestion question{*std::move(title), std::nullopt};
  if (const auto* options = arrayMember(*object, {"options"})) question.options = textsOf(options);
  return question;
}

}  // namespace

std::optional<MemoryCitation> memoryCitation(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  return MemoryCitation{listOf(arrayMember(*object, {"entries"}), memoryCitationEntry),
                        textsOf(arrayMember(*object, {"rolloutIds", "rollout_ids"}))};
}

HookPromptItem parseHookPromptItem(std::string id, const JSONObject& object) {
  return {std::move(id), listOf(arrayMember(object, {"fragments"}), hookPromptFragment)};
}

AgentMessageItem parseAgentMessageItem(std::string id, const JSONObject& object) {
  AgentMessageItem item;
  item.id = std::move(id);
  item.text = textViewMember(object, {"text"}).value_or("");
  item.phase = agentMessagePhase(textViewMember(object, {"phase"}));
  item.memoryCitation = firstMember(object, {"memoryCitation", "memory_citation"}, memoryCitation);
  item.delivery = textMember(object, {"delivery"});
  if (const auto* questions = arrayMember(object, {"questions"})) {
    item.questions = listOf(questions, agentMessageQuestion);
  }
  return item;
}

}  // namespace ormel::detail
