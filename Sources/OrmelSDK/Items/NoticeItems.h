#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// A review and what it is about. Its JSON form does not tell its type.
struct ReviewModeItem {
  std::string id;
  std::string review;
  friend bool operator==(const ReviewModeItem&, const ReviewModeItem&);
  friend std::ostream& operator<<(std::ostream& stream, const ReviewModeItem& value);
};

/// A review began.
struct EnteredReviewModeItem : ReviewModeItem {};

/// A review ended.
struct ExitedReviewModeItem : ReviewModeItem {};

/// The server shortened the model's context. Its JSON form does not tell its type.
struct ContextCompactionItem {
  std::string id;
  friend bool operator==(const ContextCompactionItem&, const ContextCompactionItem&);
  friend std::ostream& operator<<(std::ostream& stream, const ContextCompactionItem& value);
};

/// The agent waited.
struct SleepItem {
  std::string id;
  std::optional<std::int64_t> durationMilliseconds;
  friend bool operator==(const SleepItem&, const SleepItem&);
  friend std::ostream& operator<<(std::ostream& stream, const SleepItem& value);
};

/// Something went wrong, and the turn went on. Its JSON form does not tell its type.
struct ErrorItem {
  std::string id;
  std::string message;
  friend bool operator==(const ErrorItem&, const ErrorItem&);
  friend std::ostream& operator<<(std::ostream& stream, const ErrorItem& value);
};

/// An item of a type that this library does not know. Its JSON form is its payload.
struct UnknownThreadItem {
  std::string id;
  std::string itemType;
  /// The whole object as it was read.
  JSONValue payload;
  friend bool operator==(const UnknownThreadItem&, const UnknownThreadItem&);
  friend std::ostream& operator<<(std::ostream& stream, const UnknownThreadItem& value);
};

}  // namespace ormel
