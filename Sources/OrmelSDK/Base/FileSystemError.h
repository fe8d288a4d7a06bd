#pragma once

#include <string>
#include <system_error>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Export.h"

namespace ormel {

/// The file system refused. `what()` is the path, a colon, and the system's text.
///
/// *Thread safety*: an immutable value.
class ORMEL_EXPORT FileSystemError : public Error {
 public:
  FileSystemError(std::string path, std::error_code code);

  /// The path that could not be made, written or found.
  const std::string& path() const noexcept { return path_; }

  /// The system's own error; compares with `std::errc`.
  const std::error_code& code() const noexcept { return code_; }

 protected:
  std::string generalAdvice() const override;

 private:
  std::string path_;
  std::error_code code_;
};

}  // namespace ormel
