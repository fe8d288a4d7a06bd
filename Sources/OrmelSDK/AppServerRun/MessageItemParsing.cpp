#include "OrmelSDK/AppServerRun/MessageItemParsing.h"

#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/JSONFields.h"
#include "OrmelSDK/AppServerRun/ThreadItemWords.h"

namespace ormel::detail {

namespace {

std::optional<HookPromptFragment> hookPromptFragment(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  auto text = ownTextUnder(*object, {"text"});
  auto hookRunID = ownTextUnder(*object, {"hookRunId", "hook_run_id"});
  if (!text || !hookRunID) return std::nullopt;
  return HookPromptFragment{*std::move(text), *std::move(hookRunID)};
}

std::optional<MemoryCitationEntry> memoryCitationEntry(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  auto path = ownTextUnder(*object, {"path"});
  const auto lineStart = firstUnder(*object, {"lineStart", "line_start"}, parseOptionalInt);
  const auto lineEnd = firstUnder(*object, {"lineEnd", "line_end"}, parseOptionalInt);
  auto note = ownTextUnder(*object, {"note"});
  if (!path || !lineStart || !lineEnd || !note) return std::nullopt;
  return MemoryCitationEntry{*std::move(path), *lineStart, *lineEnd, *std::move(note)};
}

std::optional<AgentMessageQuestion> agentMessageQuestion(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  auto title = ownTextUnder(*object, {"title"});
  if (!title) return std::nullopt;
  AgentMessageQuestion question{*std::move(title), std::nullopt};
  if (const auto* options = arrayUnder(*object, {"options"})) question.options = textsOf(options);
  return question;
}

}  // namespace

std::optional<MemoryCitation> memoryCitation(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  return MemoryCitation{listOf(arrayUnder(*object, {"entries"}), memoryCitationEntry),
                        textsOf(arrayUnder(*object, {"rolloutIds", "rollout_ids"}))};
}

HookPromptItem parseHookPromptItem(std::string id, const JSONObject& object) {
  return {std::move(id), listOf(arrayUnder(object, {"fragments"}), hookPromptFragment)};
}

AgentMessageItem parseAgentMessageItem(std::string id, const JSONObject& object) {
  AgentMessageItem item;
  item.id = std::move(id);
  item.text = textUnder(object, {"text"}).value_or("");
  item.phase = agentMessagePhase(textUnder(object, {"phase"}));
  item.memoryCitation = firstUnder(object, {"memoryCitation", "memory_citation"}, memoryCitation);
  item.delivery = ownTextUnder(object, {"delivery"});
  if (const auto* questions = arrayUnder(object, {"questions"})) {
    item.questions = listOf(questions, agentMessageQuestion);
  }
  return item;
}

}  // namespace ormel::detail
