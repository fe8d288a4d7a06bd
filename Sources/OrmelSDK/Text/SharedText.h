#pragma once

#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace ormel {

namespace detail {

struct SharedTextBuffer;
class SharedTextSnapshots;

}  // namespace detail

/// A UTF-8 text that grows at its end, as the text of a streaming message does.
///
/// A value is a handle: a shared buffer and a length. Copying takes constant time. Appending to the copy that ends
/// where the buffer ends writes only what is appended; the other copies keep the text that they had. So a text that
/// grows piece by piece, with each state of it kept, costs time and memory in proportion to its final length.
/// Appending to a copy that is behind moves that copy to a buffer of its own.
///
/// *Thread safety*: distinct values may be used from any threads at the same time, also when they share a buffer.
/// *Object lifetimes*: a view is valid until the value that it came from is changed or destroyed; while another copy
/// with the same buffer exists it stays valid, but do not count on which copies these are.
/// *Errors*: fails with `std::bad_alloc` only, and then leaves the value as it was.
class SharedText {
 public:
  /// An empty text, which takes no memory.
  SharedText() noexcept = default;
  SharedText(std::string_view text) { append(text); }
  SharedText(const std::string& text) : SharedText(std::string_view(text)) {}
  SharedText(const char* text) : SharedText(std::string_view(text)) {}

  SharedText(const SharedText& other) noexcept;
  SharedText(SharedText&& other) noexcept
      : buffer_(std::exchange(other.buffer_, nullptr)), size_(std::exchange(other.size_, 0)) {}
  SharedText& operator=(SharedText other) noexcept {
    swap(other);
    return *this;
  }
  ~SharedText();

  void swap(SharedText& other) noexcept {
    std::swap(buffer_, other.buffer_);
    std::swap(size_, other.size_);
  }

  /// Adds `text`, which may be a part of this text, at the end.
  void append(std::string_view text);

  std::string_view view() const noexcept;
  operator std::string_view() const noexcept { return view(); }
  /// A copy that shares nothing.
  std::string string() const { return std::string(view()); }
  operator std::string() const { return string(); }

  /// Whether this text begins with all of `earlier`. Takes constant time if it has grown from it, else compares.
  bool isContinuationOf(const SharedText& earlier) const noexcept {
    return earlier.size_ <= size_ && (earlier.buffer_ == buffer_ || view().substr(0, earlier.size_) == earlier.view());
  }

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }

  /// Byte by byte.
  friend bool operator==(const SharedText& left, const SharedText& right) noexcept {
    return (left.buffer_ == right.buffer_ && left.size_ == right.size_) || left.view() == right.view();
  }
  template <std::convertible_to<std::string_view> Text>
    requires(!std::same_as<Text, SharedText>)
  friend bool operator==(const SharedText& left, const Text& right) noexcept {
    return left.view() == std::string_view(right);
  }

  /// Concatenation gives a text of its own, which shares nothing.
  friend std::string operator+(const SharedText& left, const SharedText& right) {
    return joined(left.view(), right.view());
  }
  template <std::convertible_to<std::string_view> Text>
    requires(!std::same_as<Text, SharedText>)
  friend std::string operator+(const SharedText& left, const Text& right) {
    return joined(left.view(), right);
  }
  template <std::convertible_to<std::string_view> Text>
    requires(!std::same_as<Text, SharedText>)
  friend std::string operator+(const Text& left, const SharedText& right) {
    return joined(left, right.view());
  }
  friend std::string operator+(const SharedText& left, char right) { return joined(left.view(), {&right, 1}); }
  friend std::string operator+(char left, const SharedText& right) { return joined({&left, 1}, right.view()); }

  friend std::ostream& operator<<(std::ostream& stream, const SharedText& value);

 private:
  friend class detail::SharedTextSnapshots;

  SharedText(detail::SharedTextBuffer* buffer, std::size_t size) noexcept : buffer_(buffer), size_(size) {}

  static std::string joined(std::string_view left, std::string_view right);
  bool extendInPlace(std::string_view text) noexcept;

  detail::SharedTextBuffer* buffer_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace ormel
