#include "ormel-simulator/Machine/Files/FileBytes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>

namespace ormel::simulator {

namespace {

constexpr std::size_t megabyte = std::size_t{1} << 20;
constexpr std::size_t greatestFile = 64 * megabyte;
constexpr std::size_t pieceOfFile = 65536;

/// Calls `take` with one piece after the other.
template <typename Take>
void readPieces(const detail::FileDescriptor& file, const FileTask& task, Take take) {
  std::array<char, pieceOfFile> piece;
  while (true) {
    const ssize_t count = ::read(file.number(), piece.data(), piece.size());
    if (count > 0) take(std::string_view(piece.data(), static_cast<std::size_t>(count)));
    if (count == 0) return;
    if (count < 0 && errno != EINTR) task.failBy(errno);
  }
}

}  // namespace

void requireRegularFile(const detail::FileDescriptor& file, const FileTask& task) {
  struct stat found{};
  if (::fstat(file.number(), &found) != 0) task.failBy(errno);
  if (S_ISDIR(found.st_mode)) task.failBy(EISDIR);
  if (!S_ISREG(found.st_mode)) task.fail("it is no regular file");
}

std::string readWhole(const detail::FileDescriptor& file, const FileTask& task) {
  std::string bytes;
  readPieces(file, task, [&](std::string_view piece) {
    bytes += piece;
    if (bytes.size() > greatestFile) {
      task.fail("it has more than " + std::to_string(greatestFile / megabyte) + " MiB");
    }
  });
  return bytes;
}

void writeWhole(const detail::FileDescriptor& file, std::string_view bytes, const FileTask& task) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file.number(), bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      task.failBy(errno);
    }
  }
}

void copyBytes(const detail::FileDescriptor& from, const detail::FileDescriptor& to, const FileTask& task) {
  readPieces(from, task, [&](std::string_view piece) { writeWhole(to, piece, task); });
}

}  // namespace ormel::simulator
