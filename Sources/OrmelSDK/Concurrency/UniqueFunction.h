#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace ormel::detail {

template <typename Signature>
class UniqueFunction;

/// A callable that can be moved but not copied. Callables of up to six pointers that move without throwing are kept
/// inside and cost no allocation.
///
/// *Preconditions*: calling an empty one is undefined.
template <typename Result, typename... Arguments>
class UniqueFunction<Result(Arguments...)> {
 public:
  UniqueFunction() noexcept = default;
  UniqueFunction(std::nullptr_t) noexcept {}

  template <typename F>
    requires(!std::same_as<std::remove_cvref_t<F>, UniqueFunction> &&
             std::is_invocable_r_v<Result, std::decay_t<F>&, Arguments...>)
  UniqueFunction(F&& function) {
    using Stored = std::decay_t<F>;
    if constexpr (fitsInside<Stored>) {
      ::new (static_cast<void*>(storage_)) Stored(std::forward<F>(function));
      operations_ = &insideOperations<Stored>;
    } else {
      ::new (static_cast<void*>(storage_)) Stored*(std::make_unique<Stored>(std::forward<F>(function)).release());
      operations_ = &outsideOperations<Stored>;
    }
  }

  UniqueFunction(UniqueFunction&& other) noexcept { take(other); }
  UniqueFunction& operator=(UniqueFunction&& other) noexcept {
    if (this != &other) {
      reset();
      take(other);
    }
    return *this;
  }
  UniqueFunction(const UniqueFunction&) = delete;
  UniqueFunction& operator=(const UniqueFunction&) = delete;
  ~UniqueFunction() { reset(); }

  explicit operator bool() const noexcept { return operations_ != nullptr; }

  Result operator()(Arguments... arguments) {
    return operations_->call(storage_, std::forward<Arguments>(arguments)...);
  }

 private:
  static constexpr std::size_t capacity = 6 * sizeof(void*);

  struct Operations {
    Result (*call)(void*, Arguments&&...);
    void (*moveTo)(void* from, void* to) noexcept;
    void (*destroy)(void*) noexcept;
  };

  template <typename Stored>
  static constexpr bool fitsInside = sizeof(Stored) <= capacity && alignof(Stored) <= alignof(std::max_align_t) &&
                                     std::is_nothrow_move_constructible_v<Stored>;

  template <typename Stored>
  static constexpr Operations insideOperations{
      [](void* storage, Arguments&&... arguments) -> Result {
        return (*static_cast<Stored*>(storage))(std::forward<Arguments>(arguments)...);
      },
      [](void* from, void* to) noexcept {
        ::new (to) Stored(std::move(*static_cast<Stored*>(from)));
        static_cast<Stored*>(from)->~Stored();
      },
      [](void* storage) noexcept { static_cast<Stored*>(storage)->~Stored(); }};

  template <typename Stored>
  static constexpr Operations outsideOperations{
      [](void* storage, Arguments&&... arguments) -> Result {
        return (**static_cast<Stored**>(storage))(std::forward<Arguments>(arguments)...);
      },
      [](void* from, void* to) noexcept { ::new (to) Stored*(*static_cast<Stored**>(from)); },
      [](void* storage) noexcept { delete *static_cast<Stored**>(storage); }};

  void take(UniqueFunction& other) noexcept {
    if (!other.operations_) return;
    operations_ = std::exchange(other.operations_, nullptr);
    operations_->moveTo(other.storage_, storage_);
  }

  void reset() noexcept {
    if (operations_) std::exchange(operations_, nullptr)->destroy(storage_);
  }

  const Operations* operations_ = nullptr;
  alignas(std::max_align_t) std::byte storage_[capacity];
};

}  // namespace ormel::detail
