#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace ormel {

/// How a task ended: with a value, or with an exception.
///
/// *Thread safety*: none of its own.
///
/// *Errors*: `take` throws the exception of a failed task.
template <typename T>
class TaskResult {
  using Stored =
      std::conditional_t<std::is_void_v<T>, std::monostate,
                         std::conditional_t<std::is_reference_v<T>, std::add_pointer_t<std::remove_reference_t<T>>, T>>;

 public:
  TaskResult() noexcept = default;

  bool hasValue() const noexcept { return value_.has_value(); }

  /// The exception that the task threw; null if it ended with a value.
  const std::exception_ptr& error() const noexcept { return error_; }

  /// Moves the value out, or rethrows the task's exception.
  T take() {
    if (error_) std::rethrow_exception(error_);
    if constexpr (std::is_reference_v<T>) {
      return static_cast<T>(**value_);
    } else if constexpr (!std::is_void_v<T>) {
      return std::move(*value_);
    }
  }

  template <typename... From>
  void setValue(From&&... from) {
    if constexpr (std::is_reference_v<T>) {
      (value_.emplace(std::addressof(from)), ...);
    } else {
      value_.emplace(std::forward<From>(from)...);
    }
  }
  void setError(std::exception_ptr error) noexcept {
    value_.reset();
    error_ = std::move(error);
  }

 private:
  std::optional<Stored> value_;
  std::exception_ptr error_;
};

}  // namespace ormel
