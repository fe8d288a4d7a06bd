#pragma once

#include <concepts>
#include <utility>
#include <variant>

namespace ormel {

template <typename Type, typename Variant>
inline constexpr bool isCaseOf = false;
template <typename Type, typename... Cases>
inline constexpr bool isCaseOf<Type, std::variant<Cases...>> = (std::same_as<Type, Cases> || ...);

/// A type that is one of the alternatives of a `std::variant`.
template <typename Type, typename Variant>
concept CaseOf = isCaseOf<Type, Variant>;

template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};

/// Calls the one of `functions` that takes the value's current case. A case that none of them takes is an error at
/// compile time; a function of a base class serves all cases derived from it.
template <typename Variant, typename... Functions>
decltype(auto) visit(Variant&& variant, Functions&&... functions) {
  return std::visit(Overloaded<std::decay_t<Functions>...>{std::forward<Functions>(functions)...},
                    std::forward<Variant>(variant).value);
}

}  // namespace ormel
