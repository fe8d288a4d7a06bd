#pragma once

#include <cstddef>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "OrmelSDK/Events/ThreadEvent.h"
#include "Question.h"
#include "WakePipe.h"

namespace ormel::chat {

/// The server has accepted the operation.
struct OperationAccepted {};

/// The operation is over; `failure` is null when its events ended plainly.
struct OperationEnded {
  std::exception_ptr failure;
};

/// The outcome of adding to the turn; `failure` is null if the server has taken it.
struct SteerEnded {
  std::string text;
  std::exception_ptr failure;
};

struct QuestionAsked {
  std::shared_ptr<Question> question;
};

/// Nobody waits for the answer any more.
struct QuestionWithdrawn {
  std::shared_ptr<Question> question;
};

/// Something to tell the user.
struct Notice {
  std::string text;
  Style style = Style::dim;
};

/// Another conversation to go on with.
struct ThreadChosen {
  /// Absent for a new one.
  std::optional<std::string> id;
  /// To tell the user.
  std::string text;
};

using Message = std::variant<OperationAccepted, ThreadEvent, OperationEnded, SteerEnded, QuestionAsked,
                             QuestionWithdrawn, Notice, ThreadChosen>;

/// The messages of the library's threads to the main thread, in order. The threads keep it alive, so that late messages
/// find it.
class Inbox {
 public:
  /// `keepsEachUpdate`: whether the main thread is to see every state of an item whose text grows. Otherwise a later
  /// state takes the place of one that was not taken yet, so that the inbox stays small however fast a text grows.
  explicit Inbox(bool keepsEachUpdate = false) : keepsEachUpdate_(keepsEachUpdate) {}

  /// From any thread; never waits.
  void post(Message message);

  /// All that came since the last call.
  std::vector<Message> take();

  const WakePipe& wakePipe() const noexcept { return wakePipe_; }

 private:
  const bool keepsEachUpdate_;
  WakePipe wakePipe_;
  std::mutex mutex_;
  std::vector<Message> messages_;
  /// Where in `messages_` the last states of items stand, since the last message of another kind.
  std::map<std::string, std::size_t> updates_;
};

}  // namespace ormel::chat
