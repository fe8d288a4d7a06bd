#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// A turn has begun.
struct TurnStartedEvent {
  /// The size of the model's context window, in tokens.
  std::optional<std::int64_t> modelContextWindow;
  friend bool operator==(const TurnStartedEvent&, const TurnStartedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const TurnStartedEvent& value);
};

/// The tokens that a turn has used.
struct Usage {
  std::optional<std::int64_t> totalTokens;
  std::int64_t inputTokens = 0;
  std::int64_t cachedInputTokens = 0;
  std::int64_t outputTokens = 0;
  std::optional<std::int64_t> modelContextWindow;
  friend bool operator==(const Usage&, const Usage&);
  friend std::ostream& operator<<(std::ostream& stream, const Usage& value);
};

/// A turn has ended well.
struct TurnCompletedEvent {
  Usage usage;
  friend bool operator==(const TurnCompletedEvent&, const TurnCompletedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const TurnCompletedEvent& value);
};

/// Why a turn failed.
struct ThreadError {
  std::string message;
  friend bool operator==(const ThreadError&, const ThreadError&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadError& value);
};

/// A turn has failed.
struct TurnFailedEvent {
  ThreadError error;
  friend bool operator==(const TurnFailedEvent&, const TurnFailedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const TurnFailedEvent& value);
};

/// The server reports an error of the thread, apart from the end of a turn.
struct ThreadErrorEvent {
  std::string message;
  friend bool operator==(const ThreadErrorEvent&, const ThreadErrorEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadErrorEvent& value);
};

}  // namespace ormel
