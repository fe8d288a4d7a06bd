#pragma once

#include <memory>
#include <string>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Export.h"

namespace ormel {

/// Why a run failed. `what()` is the text that the case was made with, and nothing else.
///
/// *Thread safety*: immutable; may be copied and read from any thread.
class ORMEL_EXPORT ThreadRunError : public Error {
 public:
  enum class Kind {
    /// The server reports that the turn failed; the process behind the run is sound.
    turnFailed,
    /// The stream to the server is broken, or the server broke the protocol.
    streamError,
  };

  static ThreadRunError turnFailed(std::string message) { return {Kind::turnFailed, std::move(message)}; }
  static ThreadRunError streamError(std::string message, std::shared_ptr<const FailureCause> cause = nullptr) {
    return {Kind::streamError, std::move(message), std::move(cause)};
  }

  /// A stream error whose cause tends to pass, so that the call may succeed when it is made again.
  static ThreadRunError passing(std::string message, std::shared_ptr<const FailureCause> cause = nullptr) {
    return {Kind::streamError, std::move(message), std::move(cause), true};
  }

  Kind kind() const noexcept { return kind_; }

  bool isRetryable() const noexcept override { return isRetryable_; }

  friend bool operator==(const ThreadRunError& left, const ThreadRunError& right) {
    return left.kind_ == right.kind_ && left.description() == right.description();
  }

 protected:
  std::string generalAdvice() const override;

 private:
  ThreadRunError(Kind kind, std::string message, std::shared_ptr<const FailureCause> cause = nullptr,
                 bool isRetryable = false)
      : Error(std::move(message), std::move(cause)), kind_(kind), isRetryable_(isRetryable) {}

  Kind kind_;
  bool isRetryable_;
};

}  // namespace ormel
