#include "QuestionDesk.h"

#include <algorithm>

namespace ormel::chat {

bool QuestionDesk::withdraw(const std::shared_ptr<Question>& question) {
  const auto found = std::find(questions_.begin(), questions_.end(), question);
  if (found == questions_.end()) return false;
  const bool wasAsked = found == questions_.begin() && hasAsked_;
  if (found == questions_.begin()) hasAsked_ = false;
  questions_.erase(found);
  return wasAsked;
}

void QuestionDesk::ask(Console& console) {
  questions_.front()->ask(console);
  hasAsked_ = true;
}

void QuestionDesk::answer(const std::optional<std::string>& line, bool canAskAgain) {
  hasAsked_ = false;
  const auto question = questions_.front();
  if (question->answer(line, canAskAgain)) questions_.pop_front();
}

}  // namespace ormel::chat
