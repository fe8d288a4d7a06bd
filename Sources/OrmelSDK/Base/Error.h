#pragma once

#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "OrmelSDK/Base/Export.h"
#include "OrmelSDK/Base/FailureCause.h"

namespace ormel {

/// The common base of every failure that the library throws.
///
/// `what()` is the complete, user-readable description of the failure, in UTF-8. Values are immutable once
/// constructed and may be copied and read from any thread.
class ORMEL_EXPORT Error : public std::exception {
 public:
  explicit Error(std::string description, std::shared_ptr<const FailureCause> cause = nullptr)
      : description_(std::move(description)), cause_(std::move(cause)) {}

  const char* what() const noexcept override { return description_.c_str(); }

  /// The same text as `what()`, without the length limit of a C string.
  const std::string& description() const noexcept { return description_; }

  /// Whether the application itself ended the operation: by an `AbortSignal`, by `Thread::interrupt` or `close`, or by
  /// the stop token of the task. There is nothing to report to the user then.
  virtual bool isAborted() const noexcept { return false; }

  /// Whether the same call may well succeed when it is made again, after a pause: its cause lies outside of the call
  /// and tends to pass. So it is with
  ///
  /// - `TimeoutError`: the server was slow, and need not be the next time;
  /// - `ResourceExhaustedError`: the system had no room, and others make room;
  /// - `OrmelProcessError` of the kind `exited`, and `ThreadRunError` when the connection to the server was lost or the
  ///   server did not answer a request in time: the next call starts another server process;
  /// - `ThreadRunError` with "An app-server operation is already active": see `Thread::idle`.
  ///
  /// Everything else fails again until somebody changes something: what the server refused or could not do, a wrong
  /// use of the library, an executable that is missing or not trusted.
  ///
  /// It does not tell whether repeating is harmless. A turn that was lost may have run commands and changed files
  /// before, and its prompt may be part of the conversation already.
  virtual bool isRetryable() const noexcept { return false; }

  /// A few sentences for people, to be shown behind `what()`: what was looked for, what was found, and what to do next.
  /// Never empty, without a line end behind it, and free of control characters but the line feeds between its lines.
  /// Not for programs: it may change with every release.
  std::string advice() const;

  /// The facts behind a failure of the server or of its start; null for other failures. Not part of the equality of
  /// errors.
  const std::shared_ptr<const FailureCause>& cause() const noexcept { return cause_; }

 protected:
  /// The advice of an error that has no cause.
  virtual std::string generalAdvice() const;

 private:
  std::string description_;
  std::shared_ptr<const FailureCause> cause_;
};

}  // namespace ormel
