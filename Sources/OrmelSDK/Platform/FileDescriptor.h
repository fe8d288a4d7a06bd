#pragma once

#include <utility>

namespace ormel::detail {

/// Owns one file descriptor. Not thread-safe.
class FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  explicit FileDescriptor(int number) noexcept : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor() { close(); }

  bool isOpen() const noexcept { return number_ >= 0; }
  int number() const noexcept { return number_; }
  int release() noexcept { return std::exchange(number_, -1); }
  void close() noexcept;

  /// Another descriptor of the same open file, close-on-exec and above those of the standard streams; not open when
  /// there is no room for one.
  static FileDescriptor duplicate(int number) noexcept;

 private:
  int number_ = -1;
};

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

/// A pipe whose ends no child inherits by accident: both are close-on-exec from birth. Neither is 0, 1 or 2, also in
/// an application that has closed its standard streams: what that application prints must not land in a pipe.
/// Fails with `ProcessLaunchError`.
Pipe makePipe();

/// Whether a read would find bytes now. A hang-up alone is not unread bytes.
bool hasReadableBytes(int descriptor) noexcept;

/// Whether a read would return now: with bytes, or with the end of file.
bool isReadable(int descriptor) noexcept;

}  // namespace ormel::detail
