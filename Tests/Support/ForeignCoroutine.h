#pragma once

#include <coroutine>
#include <exception>
#include <utility>

namespace ormel::testing {

/// A coroutine of a type that the library does not know: runs at once, frees itself at its end.
class ForeignCoroutine {
 public:
  class promise_type {
   public:
    ForeignCoroutine get_return_object() const noexcept { return {}; }
    std::suspend_never initial_suspend() const noexcept { return {}; }
    std::suspend_never final_suspend() const noexcept { return {}; }
    void return_void() const noexcept {}
    void unhandled_exception() const noexcept { std::terminate(); }
  };
};

/// The same, but owned by this object, which destroys it wherever it is suspended.
class OwnedForeignCoroutine {
 public:
  class promise_type {
   public:
    OwnedForeignCoroutine get_return_object() noexcept {
      return OwnedForeignCoroutine(std::coroutine_handle<promise_type>::from_promise(*this));
    }
    std::suspend_never initial_suspend() const noexcept { return {}; }
    std::suspend_always final_suspend() const noexcept { return {}; }
    void return_void() const noexcept {}
    void unhandled_exception() const noexcept { std::terminate(); }
  };

  OwnedForeignCoroutine(OwnedForeignCoroutine&& other) noexcept
      : coroutine_(std::exchange(other.coroutine_, nullptr)) {}
  OwnedForeignCoroutine& operator=(OwnedForeignCoroutine&&) = delete;
  ~OwnedForeignCoroutine() { destroy(); }

  void destroy() noexcept {
    if (coroutine_) coroutine_.destroy();
    coroutine_ = nullptr;
  }

 private:
  explicit OwnedForeignCoroutine(std::coroutine_handle<promise_type> coroutine) noexcept : coroutine_(coroutine) {}

  std::coroutine_handle<promise_type> coroutine_;
};

}  // namespace ormel::testing
