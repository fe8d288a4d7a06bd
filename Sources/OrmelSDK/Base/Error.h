#pragma once

#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "OrmelSDK/Base/FailureCause.h"

namespace ormel {

/// The common base of every failure that the library throws.
///
/// `what()` is the complete, user-readable description of the failure, in UTF-8. Values are immutable once
/// constructed and may be copied and read from any thread.
class Error : public std::exception {
 public:
  explicit Error(std::string description, std::shared_ptr<const FailureCause> cause = nullptr)
      : description_(std::move(description)), cause_(std::move(cause)) {}

  const char* what() const noexcept override { return description_.c_str(); }

  /// The same text as `what()`, without the length limit of a C string.
  const std::string& description() const noexcept { return description_; }

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
