#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "PromptWriter.h"
#include "Question.h"

namespace ormel::chat {

enum class Verdict { no, yes, always };

/// The action to be approved.
class ApprovalSubject {
 public:
  ApprovalSubject(std::string subjectTitle, bool always) : title(std::move(subjectTitle)), mayBeAlways(always) {}

  /// The program's own words.
  std::string title;
  /// The subject of the approval, in the words of who asks.
  std::vector<Quote> matter;
  /// Where, why and so on.
  std::vector<Quote> circumstances;
  /// The program's own words; may be empty.
  std::string advice;
  bool mayBeAlways;
};

/// Yes, no or always; no unless it is said plainly. A person who wants to see the whole of something long says so
/// first.
class ApprovalQuestion : public Question {
 public:
  ApprovalQuestion(ApprovalSubject subject, OneShotResolver<Verdict> verdict)
      : subject_(std::move(subject)), verdict_(std::move(verdict)) {}

  void ask(Console& console) const override;
  bool answer(const std::optional<std::string>& line, bool canAskAgain) override;

 private:
  ApprovalSubject subject_;
  bool showsAll_ = false;
  OneShotResolver<Verdict> verdict_;
};

}  // namespace ormel::chat
