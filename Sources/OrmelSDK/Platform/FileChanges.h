#pragma once

#include <string>
#include <string_view>

namespace ormel::detail {

/// The absolute path of the directory for files that need not last. It may not exist. Fails with `FileSystemError` if
/// the path is relative and the current directory is gone.
std::string temporaryDirectory();

/// Makes a directory, with those above it that are missing, open to whom the process's file mode mask leaves it open.
/// One that is there is left as it is. Fails with `FileSystemError`.
void makeDirectories(const std::string& path);

/// Writes a file so that no reader ever finds a part of it: the bytes go to a new file beside it, which then takes its
/// place. Fails with `FileSystemError`, and leaves no other file behind.
void writeFileAtomically(const std::string& path, std::string_view bytes);

/// Removes what stands at a path, a directory with all that is in it. Goes as far as the system allows.
void removeTree(const std::string& path) noexcept;

}  // namespace ormel::detail
