#include "OrmelSDK/Platform/FileChanges.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "OrmelSDK/Base/FileSystemError.h"
#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/HostProcess.h"

namespace ormel::detail {

namespace {

[[noreturn]] void failAt(const std::string& path) {
  throw FileSystemError(path, std::error_code(errno, std::generic_category()));
}

/// The place of the system where nothing was chosen.
std::string usualTemporaryDirectory() {
#if defined(__APPLE__)
  constexpr std::size_t textRoom = 1024;
  char text[textRoom];
  const std::size_t size = ::confstr(_CS_DARWIN_USER_TEMP_DIR, text, sizeof text);
  if (size > 0 && size <= sizeof text) return text;
#endif
  return "/tmp";
}

/// Open to whom the process's file mode mask leaves it open.
constexpr mode_t usualFileMode = 0666;

FileDescriptor newFile(const std::string& path) {
  FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, usualFileMode));
  if (!file.isOpen()) failAt(path);
  return file;
}

void writeAll(const FileDescriptor& file, std::string_view bytes, const std::string& path) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file.number(), bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      failAt(path);
    }
  }
}

}  // namespace

std::string temporaryDirectory() {
  auto chosen = environmentVariable("TMPDIR");
  if (!chosen || chosen->empty()) chosen = usualTemporaryDirectory();
  std::error_code failure;
  const auto absolute = std::filesystem::absolute(*chosen, failure);
  if (failure) throw FileSystemError(*chosen, failure);
  return absolute.string();
}

void makeDirectories(const std::string& path) {
  std::error_code failure;
  std::filesystem::create_directories(path, failure);
  if (failure) throw FileSystemError(path, failure);
}

void writeFileAtomically(const std::string& path, std::string_view bytes) {
  const std::string partial = path + ".partial";
  FileDescriptor file = newFile(partial);
  try {
    writeAll(file, bytes, path);
    // Some file systems tell only now that there was no room.
    if (::close(file.release()) != 0 && errno != EINTR) failAt(path);
    if (::rename(partial.c_str(), path.c_str()) != 0) failAt(path);
  } catch (...) {
    ::unlink(partial.c_str());
    throw;
  }
}

void removeTree(const std::string& path) noexcept {
  try {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  } catch (...) {
    return;  // There was no memory to go on.
  }
}

}  // namespace ormel::detail
