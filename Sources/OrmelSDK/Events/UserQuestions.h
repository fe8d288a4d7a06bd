#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/Items/ThreadItem.h"

namespace ormel {

/// An answer that a question offers.
struct UserQuestionOption {
  /// The text that is shown, and that is sent as the answer.
  std::string label;
  std::optional<std::string> description;
  /// The user is to write the answer: it is sent in place of the label.
  bool isOther = false;
  friend bool operator==(const UserQuestionOption&, const UserQuestionOption&) = default;
};

/// A question to the user.
struct UserQuestion {
  /// The key of its answers.
  std::string id;
  /// The text of the question.
  std::string question;
  /// A few words above it; often empty.
  std::string header;
  /// Empty if the user is to write the answer.
  std::vector<UserQuestionOption> options;
  /// The answer is not to be shown as it is written.
  bool isSecret = false;
  friend bool operator==(const UserQuestion&, const UserQuestion&) = default;
};

/// For the id of each question its answers.
using UserAnswers = std::map<std::string, std::vector<std::string>>;

/// Questions that the agent puts to the user during a turn, which goes on when they have been answered.
///
///     if (auto asked = UserQuestions::askedBy(*event)) {
///       UserAnswers answers = answersOfUser(asked->questions);
///       co_await thread.submitRequestUserInput(asked->itemID, std::move(answers));
///     }
struct UserQuestions {
  /// The item that asks, for `Thread::submitRequestUserInput`.
  std::string itemID;
  std::vector<UserQuestion> questions;
  /// Whether the agent waits for the answers.
  bool isBlocking = true;
  /// After so many milliseconds the server goes on without answers.
  std::optional<std::int64_t> autoResolutionMilliseconds;
  friend bool operator==(const UserQuestions&, const UserQuestions&) = default;

  /// The questions that the event asks; absent for every other event, the one of their answer included. A field of a
  /// question that is missing or of another type is read as empty.
  static std::optional<UserQuestions> askedBy(const ThreadEvent& event);
  /// The same for an item, in whatever state it is.
  static std::optional<UserQuestions> of(const ThreadItem& item);
};

}  // namespace ormel
