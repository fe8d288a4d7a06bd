#include "OrmelSDK/Text/SharedText.h"

#include <atomic>
#include <bit>
#include <cstring>
#include <limits>
#include <new>
#include <ostream>
#include <utility>

#include "OrmelSDK/Text/SharedTextSnapshots.h"

namespace ormel {

namespace detail {

/// The bytes follow the header. Bytes below `used` are never overwritten while more than one handle exists.
struct SharedTextBuffer {
  std::atomic<std::size_t> references{1};
  /// End of the longest handle. A handle that ends here and advances it atomically may write behind it.
  std::atomic<std::size_t> used;
  std::size_t capacity;

  SharedTextBuffer(std::size_t size, std::size_t room) noexcept : used(size), capacity(room) {}

  char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }

  static SharedTextBuffer* make(std::size_t size, std::size_t room) {
    return new (::operator new(sizeof(SharedTextBuffer) + room)) SharedTextBuffer(size, room);
  }

  void release(std::size_t count = 1) noexcept {
    // No other thread can race for the only references.
    if (references.load(std::memory_order_acquire) == count ||
        references.fetch_sub(count, std::memory_order_acq_rel) == count) {
      this->~SharedTextBuffer();
      ::operator delete(this);
    }
  }
};

namespace {

/// A first text gets exactly the room it needs, since most never grow. A growing text gets a block whose size is a
/// power of two, so all outgrown buffers that older handles keep are together no larger than the newest.
std::size_t roomFor(std::size_t size, bool grows) {
  if (!grows) return size;
  constexpr std::size_t most = std::numeric_limits<std::size_t>::max() / 4;
  if (size > most) throw std::bad_alloc();
  return std::bit_ceil(size + sizeof(SharedTextBuffer)) - sizeof(SharedTextBuffer);
}

}  // namespace

}  // namespace detail

SharedText::SharedText(const SharedText& other) noexcept : buffer_(other.buffer_), size_(other.size_) {
  if (buffer_) buffer_->references.fetch_add(1, std::memory_order_relaxed);
}

SharedText::~SharedText() {
  if (buffer_) buffer_->release();
}

std::string_view SharedText::view() const noexcept {
  return buffer_ ? std::string_view(buffer_->bytes(), size_) : std::string_view();
}

bool SharedText::extendInPlace(std::string_view text) noexcept {
  if (!buffer_ || text.size() > buffer_->capacity - size_) return false;
  const std::size_t end = size_ + text.size();
  if (std::size_t used = size_; !buffer_->used.compare_exchange_strong(used, end, std::memory_order_relaxed)) {
    // The only handle may overwrite bytes that longer handles, now gone, have written.
    if (buffer_->references.load(std::memory_order_acquire) != 1) return false;
    buffer_->used.store(end, std::memory_order_relaxed);
  }
  std::memmove(buffer_->bytes() + size_, text.data(), text.size());
  size_ = end;
  return true;
}

void SharedText::append(std::string_view text) {
  if (text.empty() || extendInPlace(text)) return;
  const std::size_t end = size_ + text.size();
  auto* grown = detail::SharedTextBuffer::make(end, detail::roomFor(end, size_ > 0));
  if (size_ > 0) std::memcpy(grown->bytes(), buffer_->bytes(), size_);
  std::memcpy(grown->bytes() + size_, text.data(), text.size());
  if (buffer_) buffer_->release();
  buffer_ = grown;
  size_ = end;
}

std::string SharedText::joined(std::string_view left, std::string_view right) {
  std::string whole;
  whole.reserve(left.size() + right.size());
  return whole.append(left).append(right);
}

namespace detail {

SharedText SharedTextSnapshots::of(const SharedText& text) noexcept {
  if (!text.buffer_) return SharedText();
  if (text.buffer_ != buffer_ || references_ == 0) {
    giveBack();
    buffer_ = text.buffer_;
    buffer_->references.fetch_add(takenAtOnce, std::memory_order_relaxed);
    references_ = takenAtOnce;
  }
  --references_;
  return SharedText(buffer_, text.size_);
}

void SharedTextSnapshots::append(std::string_view piece, SharedText& text) {
  if (buffer_ && text.buffer_ == buffer_ && buffer_->used.load(std::memory_order_relaxed) != text.size_) giveBack();
  text.append(piece);
}

void SharedTextSnapshots::giveBack() noexcept {
  if (references_ > 0) buffer_->release(std::exchange(references_, 0));
  buffer_ = nullptr;
}

}  // namespace detail

std::ostream& operator<<(std::ostream& stream, const SharedText& value) { return stream << value.view(); }

}  // namespace ormel
