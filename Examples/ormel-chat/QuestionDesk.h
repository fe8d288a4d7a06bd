#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "Question.h"

namespace ormel::chat {

/// The questions that wait for the user, one asked at a time.
class QuestionDesk {
 public:
  void add(std::shared_ptr<Question> question) { questions_.push_back(std::move(question)); }

  /// Does nothing if the question is settled already. Whether it stood on the screen.
  bool withdraw(const std::shared_ptr<Question>& question);

  bool isEmpty() const noexcept { return questions_.empty(); }
  bool isSecret() const { return questions_.front()->isSecret(); }

  /// Whether the first question stands on the screen.
  bool hasAsked() const noexcept { return hasAsked_; }
  void ask(Console& console);

  /// Answers the first question; see `Question::answer`.
  void answer(const std::optional<std::string>& line, bool canAskAgain);

 private:
  std::deque<std::shared_ptr<Question>> questions_;
  bool hasAsked_ = false;
};

}  // namespace ormel::chat
