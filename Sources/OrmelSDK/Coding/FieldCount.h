#pragma once

#include <concepts>
#include <cstddef>
#include <cstdlib>
#include <type_traits>
#include <utility>

namespace ormel::coding {

/// Converts to the type of any field of an aggregate, so that the number of fields can be probed.
template <typename Record>
struct AnyField {
  template <typename T>
    requires(!std::same_as<std::remove_cvref_t<T>, Record>)
  operator T() const {
    std::abort();
  }
};

template <typename Record, std::size_t... indices>
constexpr bool takesFields(std::index_sequence<indices...>) {
  return requires { Record{((void)indices, AnyField<Record>{})...}; };
}

/// The number of fields of an aggregate: the largest number of initialisers that it takes.
template <typename Record, std::size_t count = 0, std::size_t largest = 0>
constexpr std::size_t fieldCount() {
  constexpr std::size_t most = 64;
  if constexpr (count > most) {
    return largest;
  } else if constexpr (takesFields<Record>(std::make_index_sequence<count>{})) {
    return fieldCount<Record, count + 1, count>();
  } else {
    return fieldCount<Record, count + 1, largest>();
  }
}

}  // namespace ormel::coding
