#include "OrmelSDK/Events/UserQuestions.h"

#include <utility>
#include <variant>

namespace ormel {

namespace {

std::vector<UserQuestionOption> optionsOf(const JSONValue& question) {
  std::vector<UserQuestionOption> options;
  const JSONArray* const list = question["options"].arrayValue();
  if (!list) return options;
  for (const JSONValue& given : *list) {
    UserQuestionOption option;
    option.label = given["label"].textOr("");
    if (const auto description = given["description"].stringValue()) option.description = std::string(*description);
    option.isOther = given["isOther"].booleanOr(false);
    options.push_back(std::move(option));
  }
  return options;
}

UserQuestion questionOf(const JSONValue& given) {
  UserQuestion question;
  question.id = given["id"].textOr("");
  question.question = given["question"].textOr("");
  question.header = given["header"].textOr("");
  question.options = optionsOf(given);
  question.isSecret = given["isSecret"].booleanOr(false);
  return question;
}

}  // namespace

std::optional<UserQuestions> UserQuestions::of(const ThreadItem& item) {
  const auto* const call = std::get_if<McpToolCallItem>(&item.value);
  if (!call || call->server != "ormel" || call->tool != "request_user_input") return std::nullopt;
  UserQuestions asked;
  asked.itemID = call->id;
  asked.isBlocking = call->arguments["isBlocking"].booleanOr(true);
  asked.autoResolutionMilliseconds = call->arguments["autoResolutionMs"].integerValue();
  if (const JSONArray* const questions = call->arguments["questions"].arrayValue()) {
    for (const JSONValue& question : *questions) asked.questions.push_back(questionOf(question));
  }
  return asked;
}

std::optional<UserQuestions> UserQuestions::askedBy(const ThreadEvent& event) {
  const auto* const started = std::get_if<ItemStartedEvent>(&event.value);
  return started ? of(started->item) : std::nullopt;
}

}  // namespace ormel
