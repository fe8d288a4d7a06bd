#pragma once

#include <exception>
#include <string>
#include <utility>

#include "OrmelSDK/Base/Export.h"

namespace ormel {

/// The common base of every failure that the library throws.
///
/// `what()` is the complete, user-readable description of the failure, in UTF-8. Values are immutable once
/// constructed and may be copied and read from any thread.
class ORMEL_EXPORT Error : public std::exception {
 public:
  explicit Error(std::string description) : description_(std::move(description)) {}

  const char* what() const noexcept override { return description_.c_str(); }

  /// The same text as `what()`, without the length limit of a C string.
  const std::string& description() const noexcept { return description_; }

 private:
  std::string description_;
};

}  // namespace ormel
