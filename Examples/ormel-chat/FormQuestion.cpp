#include "FormQuestion.h"

#include <algorithm>

#include "Texts.h"

namespace ormel::chat {

void FormQuestion::ask(Console& console) const {
  if (inOwnWords_) {
    console.write("In your own words: ", Style::bold);
    return;
  }
  console.separate();
  if (current_ == 0 && !title_.empty()) console.line(title_, Style::yellow);
  console.line(field().prompt, Style::yellow);
  int number = 0;
  for (const auto& option : field().options) {
    std::string line = "  " + std::to_string(++number) + ". " + option.label;
    if (!option.description.empty()) line += " - " + option.description;
    console.line(line);
  }
  console.write(field().options.empty() ? "Your answer: " : "Your choice: ", Style::bold);
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
