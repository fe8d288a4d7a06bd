#pragma once

#include <exception>
#include <string>

#include "OrmelSDK/AppServerRun/TurnRun/RunFailure.h"

namespace ormel::detail {

/// How the current operation of a run ended, if it has.
class StreamCompletion {
 public:
  enum class Kind {
    /// The operation is running, or none has started on this run.
    pending,
    /// The operation ended normally, also when the turn itself failed.
    finished,
    /// The operation ended badly.
    failed,
  };

  /// A completion that is pending.
  StreamCompletion() = default;

  static StreamCompletion finished() { return {Kind::finished, {}}; }
  static StreamCompletion failed(RunFailure failure) { return {Kind::failed, std::move(failure)}; }
  /// The application stopped it.
  static StreamCompletion aborted();

  Kind kind() const noexcept { return kind_; }
  bool isPending() const noexcept { return kind_ == Kind::pending; }

  /// The error that ends the channel of the events; null for a plain end.
  std::exception_ptr streamError() const noexcept;

  /// The error of a waiter for a response that the end releases.
  std::exception_ptr waiterError() const noexcept;

  /// The error of a further request; null while there is no end.
  std::exception_ptr senderError() const noexcept;

 private:
  StreamCompletion(Kind kind, RunFailure failure) : kind_(kind), failure_(std::move(failure)) {}

  Kind kind_ = Kind::pending;
  RunFailure failure_;
};

}  // namespace ormel::detail
