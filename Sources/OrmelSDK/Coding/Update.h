#pragma once

#include <optional>
#include <type_traits>
#include <utility>

namespace ormel {

/// What an update does to one setting: gives it a value, leaves it as it is, or clears it.
///
/// A default-constructed update leaves the setting unchanged. As distinct from `std::optional`, it can say "no value"
/// and "do not touch" apart.
template <typename T>
class Update {
 public:
  Update() = default;
  /// Sets the value.
  Update(T value) : isUnchanged_(false), value_(std::move(value)) {}

  static Update value(T value) { return Update(std::move(value)); }
  static Update unchanged() { return Update(); }
  static Update clear() {
    Update update;
    update.isUnchanged_ = false;
    return update;
  }

  bool isUnchanged() const noexcept { return isUnchanged_; }
  bool isClear() const noexcept { return !isUnchanged_ && !value_; }
  /// Absent unless the update sets a value.
  const std::optional<T>& newValue() const noexcept { return value_; }

  friend bool operator==(const Update&, const Update&) = default;

 private:
  bool isUnchanged_ = true;
  std::optional<T> value_;
};

template <typename T>
inline constexpr bool isUpdate = false;
template <typename T>
inline constexpr bool isUpdate<Update<T>> = true;

/// An `Update` of anything.
template <typename T>
concept AnyUpdate = isUpdate<T>;

}  // namespace ormel
