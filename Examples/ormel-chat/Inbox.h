#pragma once

#include <exception>
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

using Message = std::variant<OperationAccepted, ThreadEvent, OperationEnded, QuestionAsked, QuestionWithdrawn, Notice,
                             ThreadChosen>;

/// The messages of the library's threads to the main thread, in order. The threads keep it alive, so that late messages
/// find it.
class Inbox {
 public:
  /// From any thread; never waits.
  void post(Message message) {
    {
      const std::lock_guard lock(mutex_);
      messages_.push_back(std::move(message));
    }
    wakePipe_.wake();
  }

  /// All that came since the last call.
  std::vector<Message> take() {
    wakePipe_.drain();
    const std::lock_guard lock(mutex_);
    return std::exchange(messages_, {});
  }

  const WakePipe& wakePipe() const noexcept { return wakePipe_; }

 private:
  WakePipe wakePipe_;
  std::mutex mutex_;
  std::vector<Message> messages_;
};

}  // namespace ormel::chat
