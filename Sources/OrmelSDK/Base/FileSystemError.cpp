#include "OrmelSDK/Base/FileSystemError.h"

#include <utility>

namespace ormel {

FileSystemError::FileSystemError(std::string path, std::error_code code)
    : Error(path + ": " + code.message()), path_(std::move(path)), code_(code) {}

std::string FileSystemError::generalAdvice() const {
  if (code_ == std::errc::no_space_on_device || code_ == std::errc::too_many_files_open) {
    return "Make room on the disk, or raise the limit on open files (ulimit -n), whichever is named; then try again.";
  }
  if (code_ == std::errc::permission_denied || code_ == std::errc::read_only_file_system ||
      code_ == std::errc::operation_not_permitted) {
    return "See that this user may write there; for temporary files, TMPDIR can name another folder.";
  }
  if (code_ == std::errc::no_such_file_or_directory || code_ == std::errc::not_a_directory) {
    return "See that the folder is there; for temporary files, TMPDIR names it.";
  }
  return "The system refused the path above for the reason behind it. Mend that, and try again.";
}

}  // namespace ormel
