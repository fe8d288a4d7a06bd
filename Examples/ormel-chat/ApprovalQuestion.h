#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "Question.h"

namespace ormel::chat {

enum class Verdict { no, yes, always };

/// The action to be approved.
class ApprovalSubject {
 public:
  ApprovalSubject(std::string subjectTitle, bool always) : title(std::move(subjectTitle)), mayBeAlways(always) {}

  std::string title;
  std::vector<std::string> details;
  bool mayBeAlways;
};

/// Yes, no or always; no unless it is said plainly.
class ApprovalQuestion : public Question {
 public:
  ApprovalQuestion(ApprovalSubject subject, OneShotResolver<Verdict> verdict)
      : subject_(std::move(subject)), verdict_(std::move(verdict)) {}

  void ask(Console& console) const override;
  bool answer(const std::optional<std::string>& line, bool canAskAgain) override;

 private:
  ApprovalSubject subject_;
  OneShotResolver<Verdict> verdict_;
};

}  // namespace ormel::chat
