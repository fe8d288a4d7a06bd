#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "PromptWriter.h"
#include "Question.h"

namespace ormel::chat {

/// One choice of a field.
struct FormOption {
  std::string label;
  std::string description;
  /// The user says it in own words.
  bool isOther = false;
};

/// One thing to fill in.
struct FormField {
  std::string id;
  /// In the words of who asks; may be empty.
  std::string prompt;
  std::vector<FormOption> options;
  bool isSecret = false;
  /// Whether an answer will do; any will, if empty.
  std::function<bool(const std::string&)> accepts = {};
};

/// For each field that was answered, the answer.
using FormAnswers = std::map<std::string, std::string>;

/// Fields to fill in one after the other. An empty line leaves a field out.
class FormQuestion : public Question {
 public:
  /// Gets the answers, or nothing when the input ended before the last field.
  using Receiver = std::function<void(const std::optional<FormAnswers>&)>;

  /// `title` is the program's own words; `about` says more, in the words of who asks.
  FormQuestion(std::string title, std::vector<Quote> about, std::vector<FormField> fields, Receiver receiver)
      : title_(std::move(title)),
        about_(std::move(about)),
        fields_(std::move(fields)),
        receiver_(std::move(receiver)) {}

  void ask(Console& console) const override;
  bool isSecret() const override { return field().isSecret; }
  bool answer(const std::optional<std::string>& line, bool canAskAgain) override;

 private:
  const FormField& field() const { return fields_[current_]; }
  /// The option that the line names by its number or its label.
  const FormOption* chosenOption(const std::string& line) const;

  std::string title_;
  std::vector<Quote> about_;
  std::vector<FormField> fields_;
  Receiver receiver_;
  std::size_t current_ = 0;
  bool inOwnWords_ = false;
  FormAnswers answers_;
};

}  // namespace ormel::chat
