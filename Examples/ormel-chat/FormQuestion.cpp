#include "FormQuestion.h"

#include <algorithm>

#include "Texts.h"

namespace ormel::chat {

void FormQuestion::ask(Console& console) const {
  constexpr bool showsAll = true;
  PromptWriter prompt(console, showsAll);
  if (inOwnWords_) {
    prompt.invite("In your own words: ");
    return;
  }
  console.separate();
  prompt.say(title_, Style::yellow);
  if (current_ == 0) prompt.quote(about_);
  std::vector<Quote> quotes;
  if (!field().prompt.empty()) quotes.push_back({"", field().prompt});
  int number = 0;
  for (const auto& option : field().options) {
    const std::string description = option.description.empty() ? "" : " - " + option.description;
    quotes.push_back({std::to_string(++number) + ".", option.label + description});
  }
  prompt.quote(quotes);
  prompt.explain();
  prompt.invite(field().options.empty() ? "Your answer: " : "Your choice: ");
}

const FormOption* FormQuestion::chosenOption(const std::string& line) const {
  int number = 0;
  for (const auto& option : field().options) {
    if (line == std::to_string(++number) || line == option.label) return &option;
  }
  return nullptr;
}

bool FormQuestion::answer(const std::optional<std::string>& line, bool canAskAgain) {
  if (!line) {
    receiver_(std::nullopt);
    return true;
  }
  const std::string text(trimmed(*line));
  const FormOption* option = inOwnWords_ ? nullptr : chosenOption(text);
  if (option && option->isOther) {
    inOwnWords_ = true;
    return false;
  }
  const std::string& value = option ? option->label : text;
  const bool isAcceptable = !field().accepts || field().accepts(value);
  if (!value.empty() && !isAcceptable && canAskAgain) return false;
  if (!value.empty() && isAcceptable) answers_[field().id] = value;
  inOwnWords_ = false;
  if (++current_ < fields_.size()) return false;
  receiver_(answers_);
  return true;
}

}  // namespace ormel::chat
