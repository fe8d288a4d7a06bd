#pragma once

#include <memory>
#include <utility>

#include "Inbox.h"

namespace ormel::chat {

/// A question that was put to the user from a thread of the library. It is taken back when whoever asked it goes away.
class AskedQuestion {
 public:
  AskedQuestion(std::shared_ptr<Inbox> inbox, std::shared_ptr<Question> question)
      : inbox_(std::move(inbox)), question_(std::move(question)) {
    inbox_->post(QuestionAsked{question_});
  }
  AskedQuestion(const AskedQuestion&) = delete;
  AskedQuestion& operator=(const AskedQuestion&) = delete;
  ~AskedQuestion() { inbox_->post(QuestionWithdrawn{std::move(question_)}); }

 private:
  std::shared_ptr<Inbox> inbox_;
  std::shared_ptr<Question> question_;
};

}  // namespace ormel::chat
