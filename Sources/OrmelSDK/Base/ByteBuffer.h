#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace ormel::detail {

/// A growing run of bytes with room to write past its end.
///
/// Unlike a string it can grow without filling the new room, and it grows by `realloc`, which moves large buffers
/// without copying them. Not thread-safe.
class ByteBuffer {
 public:
  ByteBuffer() noexcept = default;
  ByteBuffer(ByteBuffer&& other) noexcept
      : bytes_(std::exchange(other.bytes_, nullptr)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  ByteBuffer& operator=(ByteBuffer&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    return *this;
  }
  ~ByteBuffer() { std::free(bytes_); }

  char* data() noexcept { return bytes_; }
  const char* data() const noexcept { return bytes_; }
  std::size_t size() const noexcept { return size_; }
  std::size_t capacity() const noexcept { return capacity_; }
  bool empty() const noexcept { return size_ == 0; }
  std::string_view view() const noexcept { return {bytes_, size_}; }
  void clear() noexcept { size_ = 0; }

  /// Makes room for `count` more bytes behind the end and returns where they go; `commit` then adds them.
  char* room(std::size_t count) {
    if (capacity_ - size_ < count) grow(count);
    return bytes_ + size_;
  }
  void commit(std::size_t count) noexcept { size_ += count; }

  void append(std::string_view bytes) {
    if (bytes.empty()) return;
    std::memcpy(room(bytes.size()), bytes.data(), bytes.size());
    size_ += bytes.size();
  }

  void append(char byte) {
    *room(1) = byte;
    ++size_;
  }

  /// Drops the first `count` bytes.
  void removePrefix(std::size_t count) noexcept {
    if (count == 0) return;
    std::memmove(bytes_, bytes_ + count, size_ - count);
    size_ -= count;
  }

 private:
  void grow(std::size_t count) {
    constexpr std::size_t smallest = 256;
    const std::size_t capacity = std::max({smallest, size_ + count, capacity_ + capacity_ / 2});
    void* grown = std::realloc(bytes_, capacity);
    if (!grown) throw std::bad_alloc();
    bytes_ = static_cast<char*>(grown);
    capacity_ = capacity;
  }

  char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace ormel::detail
