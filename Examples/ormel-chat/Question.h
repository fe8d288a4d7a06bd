#pragma once

#include <optional>
#include <string>

#include "Console.h"

namespace ormel::chat {

/// Something that a person has to decide, in one line or several. Used by the main thread only, where not said
/// otherwise.
class Question {
 public:
  Question() = default;
  Question(const Question&) = delete;
  Question& operator=(const Question&) = delete;
  virtual ~Question() = default;

  /// Asks for the next line.
  virtual void ask(Console& console) const = 0;

  /// Whether the line that is asked for is nobody else's business.
  virtual bool isSecret() const { return false; }

  /// Takes a line, or nothing at the end of the input, and tells whether the question is settled. When it is not, it is
  /// asked again, if only for its next part; `canAskAgain` tells whether anybody would read that.
  virtual bool answer(const std::optional<std::string>& line, bool canAskAgain) = 0;
};

}  // namespace ormel::chat
