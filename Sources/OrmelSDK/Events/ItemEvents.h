#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Items/ThreadItem.h"

namespace ormel {

/// An item of a turn has begun.
struct ItemStartedEvent {
  ThreadItem item;
  std::optional<std::string> threadID;
  std::optional<std::string> turnID;
  /// Milliseconds since the Unix epoch.
  std::optional<std::int64_t> startedAtMilliseconds;
  friend bool operator==(const ItemStartedEvent&, const ItemStartedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ItemStartedEvent& value);
};

/// An item of a turn has grown or changed.
struct ItemUpdatedEvent {
  ThreadItem item;
  friend bool operator==(const ItemUpdatedEvent&, const ItemUpdatedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ItemUpdatedEvent& value);
};

/// An item of a turn has its final state.
struct ItemCompletedEvent {
  ThreadItem item;
  std::optional<std::string> threadID;
  std::optional<std::string> turnID;
  /// Milliseconds since the Unix epoch.
  std::optional<std::int64_t> completedAtMilliseconds;
  friend bool operator==(const ItemCompletedEvent&, const ItemCompletedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ItemCompletedEvent& value);
};

}  // namespace ormel
