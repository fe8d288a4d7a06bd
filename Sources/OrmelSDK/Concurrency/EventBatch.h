#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

namespace ormel {

/// A queue of events in transit, oldest first. Events stay where they were constructed until taken: forwarding a batch
/// or appending it to another one moves no event.
///
/// *Thread safety*: none of its own; the events may have been made on another thread.
template <typename T>
class EventBatch {
 public:
  EventBatch() noexcept = default;
  EventBatch(EventBatch&& other) noexcept { swap(other); }
  EventBatch& operator=(EventBatch&& other) noexcept {
    EventBatch(std::move(other)).swap(*this);
    return *this;
  }
  ~EventBatch() { clear(); }

  bool empty() const noexcept { return size_ == 0; }
  std::size_t size() const noexcept { return size_; }

  /// *Preconditions*: not empty.
  T& front() noexcept { return *first_->event(first_->begin); }

  /// Makes an event at the end.
  template <typename... Arguments>
  void emplaceBack(Arguments&&... arguments) {
    if (last_ && last_->end < last_->capacity) {
      std::construct_at(last_->slot(last_->end), std::forward<Arguments>(arguments)...);
    } else {
      std::unique_ptr<Block, FreeBlock> block(Block::make(nextCapacity()));
      std::construct_at(block->slot(0), std::forward<Arguments>(arguments)...);
      (last_ ? last_->next : first_) = block.get();
      last_ = block.release();
    }
    ++last_->end;
    ++size_;
  }

  /// *Preconditions*: not empty.
  void popFront() noexcept {
    std::destroy_at(first_->event(first_->begin));
    ++first_->begin;
    --size_;
    if (first_->begin == first_->end) dropFirstBlock();
  }

  /// Adds the events of another batch, which is then empty, at the end.
  void append(EventBatch&& other) noexcept {
    if (other.empty()) return;
    (last_ ? last_->next : first_) = other.first_;
    last_ = other.last_;
    size_ += other.size_;
    other.first_ = other.last_ = nullptr;
    other.size_ = 0;
  }

  void clear() noexcept {
    while (!empty()) popFront();
  }

  void swap(EventBatch& other) noexcept {
    std::swap(first_, other.first_);
    std::swap(last_, other.last_);
    std::swap(size_, other.size_);
  }

 private:
  /// Header of a block of events, which follow it in memory; filled once, from front to back.
  struct Block {
    Block(std::byte* storage, std::size_t room) noexcept : slots(storage), capacity(room) {}

    Block* next = nullptr;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::byte* const slots;
    const std::size_t capacity;

    static constexpr std::size_t alignment = std::max(alignof(T), alignof(std::max_align_t));
    static constexpr std::size_t headSize() { return (sizeof(Block) + alignment - 1) / alignment * alignment; }

    static Block* make(std::size_t room) {
      static_assert(alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
      auto* const storage = static_cast<std::byte*>(::operator new(headSize() + room * sizeof(T)));
      return new (storage) Block(storage + headSize(), room);
    }

    /// Storage for the event at this index, not yet constructed.
    T* slot(std::size_t index) noexcept { return reinterpret_cast<T*>(slots + index * sizeof(T)); }
    /// The event at this index, which must have been constructed.
    T* event(std::size_t index) noexcept { return std::launder(slot(index)); }
  };

  struct FreeBlock {
    void operator()(Block* block) const noexcept { ::operator delete(block); }
  };

  // Most batches hold one event; the batches of a stream soon need blocks of this size.
  static constexpr std::size_t largestBlock = std::max<std::size_t>(8, 16'384 / sizeof(T));

 public:
  /// Walks through the events without taking them.
  class Iterator {
   public:
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using iterator_concept = std::input_iterator_tag;

    explicit Iterator(Block* block) noexcept : block_(block), index_(block ? block->begin : 0) {}

    T& operator*() const noexcept { return *block_->event(index_); }
    T* operator->() const noexcept { return block_->event(index_); }
    Iterator& operator++() noexcept {
      if (++index_ < block_->end) return *this;
      block_ = block_->next;
      index_ = block_ ? block_->begin : 0;
      return *this;
    }
    void operator++(int) noexcept { ++*this; }
    friend bool operator==(const Iterator& iterator, std::default_sentinel_t) noexcept { return !iterator.block_; }

   private:
    Block* block_;
    std::size_t index_;
  };

  Iterator begin() const noexcept { return Iterator(empty() ? nullptr : first_); }
  std::default_sentinel_t end() const noexcept { return {}; }

 private:
  std::size_t nextCapacity() const noexcept { return last_ ? std::min(2 * last_->capacity, largestBlock) : 1; }

  void dropFirstBlock() noexcept {
    const std::unique_ptr<Block, FreeBlock> block(first_);
    first_ = block->next;
    if (!first_) last_ = nullptr;
  }

  Block* first_ = nullptr;
  Block* last_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace ormel
