#include "UserInputQuestion.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "FormQuestion.h"
#include "Operation.h"
#include "Texts.h"

namespace ormel::chat {

namespace {

bool isTrue(const JSONValue& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return value && value->boolValue().value_or(false);
}

std::vector<FormOption> choicesOf(const JSONValue& question) {
  std::vector<FormOption> options;
  const JSONValue* list = question.find("options");
  if (!list || !list->arrayValue()) return options;
  for (const JSONValue& option : *list->arrayValue()) {
    options.push_back({textViewMember(option, "label"), textViewMember(option, "description"),
                       isTrue(option, "requiresCustomInput")});
  }
  return options;
}

std::vector<FormField> questionsOf(const JSONValue& arguments) {
  std::vector<FormField> fields;
  const JSONValue* questions = arguments.find("questions");
  if (!questions || !questions->arrayValue()) return fields;
  for (const JSONValue& question : *questions->arrayValue()) {
    FormField field;
    field.id = textViewMember(question, "id");
    field.prompt = textViewMember(question, "prompt");
    field.options = choicesOf(question);
    field.isSecret = isTrue(question, "isSecret");
    fields.push_back(std::move(field));
  }
  return fields;
}

}  // namespace

bool isUserInputRequest(const McpToolCallItem& item) {
  return item.server == "ormel" && item.tool == "request_user_input";
}

std::shared_ptr<Question> userInputQuestion(const McpToolCallItem& item, const Thread& thread,
                                            const std::shared_ptr<Inbox>& inbox) {
  auto fields = questionsOf(item.arguments);
  std::map<std::string, std::vector<std::string>> unanswered;
  for (const auto& field : fields) unanswered[field.id];
  auto send = [thread, inbox, itemID = item.id, unanswered](const std::optional<FormAnswers>& given) {
    auto answers = unanswered;
    for (const auto& [id, text] : given.value_or(FormAnswers())) answers[id].push_back(text);
    follow(thread.submitRequestUserInput(itemID, std::move(answers)), inbox);
  };
  if (fields.empty()) {
    send(std::nullopt);
    return nullptr;
  }
  return std::make_shared<FormQuestion>("The agent asks:", std::vector<Quote>(), std::move(fields), std::move(send));
}

}  // namespace ormel::chat
