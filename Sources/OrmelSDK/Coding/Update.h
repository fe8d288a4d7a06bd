#pragma once

#include <concepts>
#include <optional>
#include <type_traits>
#include <utility>

namespace ormel {

/// What a call does to a value that the server keeps: sets it, clears it, or, unless told otherwise, leaves it alone.
///
///     params.tokenBudget = 50'000;
///     params.tokenBudget = ThreadGoalTokenBudgetUpdate::clear();
template <typename Value>
class Update {
 public:
  enum class Kind { value, unchanged, clear };

  Update() = default;

  template <typename From>
    requires(std::convertible_to<From, Value> && !std::same_as<std::remove_cvref_t<From>, Update>)
  Update(From&& newValue) : kind_(Kind::value), value_(std::forward<From>(newValue)) {}

  static Update value(Value newValue) { return Update(std::move(newValue)); }
  static Update unchanged() { return {}; }
  static Update clear() {
    Update update;
    update.kind_ = Kind::clear;
    return update;
  }

  Kind kind() const noexcept { return kind_; }

  /// The value to set; nothing in the other cases.
  const std::optional<Value>& newValue() const noexcept { return value_; }

  friend bool operator==(const Update&, const Update&) = default;

 private:
  Kind kind_ = Kind::unchanged;
  std::optional<Value> value_;
};

}  // namespace ormel
