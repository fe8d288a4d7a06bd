#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The status of a turn. Read without regard to case, "_" and "-"; a word that is not known is `unknown`.
enum class ThreadTurnStatus { completed, interrupted, failed, inProgress, unknown };
std::ostream& operator<<(std::ostream& stream, const ThreadTurnStatus& value);

/// How many of a turn's items a reply holds.
enum class ThreadTurnItemsView { notLoaded, summary, full };
std::ostream& operator<<(std::ostream& stream, const ThreadTurnItemsView& value);

/// Why a turn failed.
struct ThreadTurnError {
  std::string message;
  /// The kind of the failure, in the server's own words.
  std::optional<JSONValue> ormelErrorInfo;
  std::optional<std::string> additionalDetails;
  friend bool operator==(const ThreadTurnError&, const ThreadTurnError&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadTurnError& value);
};

/// One turn of a thread: what the user sent, and what came of it.
struct ThreadTurn {
  std::string id;
  /// As many of them as `itemsView` says.
  std::vector<ThreadItem> items;
  ThreadTurnItemsView itemsView = ThreadTurnItemsView::full;
  ThreadTurnStatus status = ThreadTurnStatus::unknown;
  std::optional<ThreadTurnError> error;
  /// Seconds since the Unix epoch.
  std::optional<double> startedAt;
  /// Seconds since the Unix epoch.
  std::optional<double> completedAt;
  std::optional<std::int64_t> durationMilliseconds;
  friend bool operator==(const ThreadTurn&, const ThreadTurn&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadTurn& value);
};

/// One item, and the turn that it belongs to.
struct ThreadItemEntry {
  std::string turnID;
  ThreadItem item;
  friend bool operator==(const ThreadItemEntry&, const ThreadItemEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadItemEntry& value);
};

/// A page of items.
struct ThreadTurnItemsListResponse {
  std::vector<ThreadItemEntry> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  std::optional<std::string> backwardsCursor;
  friend bool operator==(const ThreadTurnItemsListResponse&, const ThreadTurnItemsListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadTurnItemsListResponse& value);
};

/// A page of items as older servers send it, all of one turn.
struct LegacyThreadTurnItemsListResponse {
  std::vector<ThreadItem> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  std::optional<std::string> backwardsCursor;
  friend bool operator==(const LegacyThreadTurnItemsListResponse&, const LegacyThreadTurnItemsListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const LegacyThreadTurnItemsListResponse& value);
};

/// A page of turns.
struct ThreadTurnsListResponse {
  std::vector<ThreadTurn> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  std::optional<std::string> backwardsCursor;
  friend bool operator==(const ThreadTurnsListResponse&, const ThreadTurnsListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadTurnsListResponse& value);
};

/// The turn that reviews, and the thread in which it runs.
struct ReviewStartResponse {
  ThreadTurn turn;
  std::string reviewThreadID;
  friend bool operator==(const ReviewStartResponse&, const ReviewStartResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ReviewStartResponse& value);
};

}  // namespace ormel
