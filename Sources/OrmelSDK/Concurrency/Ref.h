#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace ormel::detail {

/// An object that is destroyed with its last `Ref`. It starts with one reference, which `adopt` takes over.
class RefCounted {
 public:
  RefCounted(const RefCounted&) = delete;
  RefCounted& operator=(const RefCounted&) = delete;

  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    // The holder of the only reference needs no read-modify-write: no other thread can add a reference.
    if (references_.load(std::memory_order_acquire) == 1 || references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      delete this;
    }
  }

 protected:
  RefCounted() noexcept = default;
  virtual ~RefCounted() = 0;

 private:
  std::atomic<std::uint32_t> references_{1};
};

/// A counted reference to a `RefCounted` object, possibly empty.
template <typename T>
class Ref {
 public:
  Ref() noexcept = default;
  explicit Ref(T* object) noexcept : object_(object) {
    if (object_) object_->retain();
  }
  static Ref adopt(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  Ref(const Ref& other) noexcept : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() {
    if (object_) object_->release();
  }

  T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

}  // namespace ormel::detail
