#pragma once

#include <optional>
#include <stop_token>
#include <string_view>
#include <utility>

#include "OrmelSDK/AppServerRun/Framing/AppServerJSONLineBuffer.h"
#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Task.h"

namespace ormel::detail {

/// The standard output of a server process, line by line:
///
///     while (co_await output.nextChunk()) {
///       while (auto line = output.nextLine()) handle(*line);
///     }
///     if (auto lastLine = output.nextLine()) handle(*lastLine);  // one without a line feed
///
/// As soon as the connection is closed there are no more lines, also of bytes that came before.
///
/// *Thread safety*: none; it belongs to the one loop that reads the output.
/// *Object lifetimes*: may outlive its connection.
/// *Cancellation*: `nextChunk` fails with `CancelledError` if its task is cancelled while the connection is open.
class ServerOutput {
 public:
  ServerOutput(EventChannel<ByteBuffer> chunks, std::stop_token closed)
      : chunks_(std::move(chunks)), closed_(std::move(closed)) {}

  /// Waits for the next bytes; returns false at the end of the output, or when the connection was closed. Afterwards
  /// `nextLine` gives the last line if that has no line feed.
  ///
  /// *Preconditions*: `nextLine` has given nothing.
  Task<bool> nextChunk();

  /// The bytes that came last.
  std::string_view chunk() const noexcept { return chunk_.view(); }

  /// The next line of the bytes that have come, if there is one. See `AppServerJSONLineBuffer::next` for how long it
  /// can be read, and for the bytes behind it.
  std::optional<std::string_view> nextLine() {
    if (isClosed()) return std::nullopt;
    return hasEnded_ ? lines_.finish() : lines_.next();
  }

  /// Whether `nextChunk` would not have to wait.
  bool isReady() const { return chunks_.isReady(); }

  /// Whether the connection was closed from this side.
  bool isClosed() const noexcept { return closed_.stop_requested(); }

  /// Is stopped when the connection is closed, for what the reader waits for besides the output.
  const std::stop_token& stopToken() const noexcept { return closed_; }

 private:
  EventChannel<ByteBuffer> chunks_;
  std::stop_token closed_;
  ByteBuffer chunk_;
  AppServerJSONLineBuffer lines_;
  bool hasEnded_ = false;
};

}  // namespace ormel::detail
