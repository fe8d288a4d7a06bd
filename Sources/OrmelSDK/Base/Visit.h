#pragma once

#include <concepts>
#include <type_traits>
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

/// Never defined: the compiler names it, and so the case, in its first error when a call of `visit` leaves a case out.
template <typename Case>
struct NoFunctionGivenToVisitTakes;

/// Checks that a call of `visit` takes the alternative `Case`.
template <typename Case, bool isTaken>
consteval bool visitsCase() {
  if constexpr (!isTaken) static_cast<void>(sizeof(NoFunctionGivenToVisitTakes<Case>));
  return isTaken;
}

template <typename Functions, typename Variant>
inline constexpr bool visitsAllCases = true;
template <typename Functions, typename... Cases>
inline constexpr bool visitsAllCases<Functions, std::variant<Cases...>&> =
    (visitsCase<Cases, std::invocable<Functions&, Cases&>>() && ...);
template <typename Functions, typename... Cases>
inline constexpr bool visitsAllCases<Functions, const std::variant<Cases...>&> =
    (visitsCase<Cases, std::invocable<Functions&, const Cases&>>() && ...);
template <typename Functions, typename... Cases>
inline constexpr bool visitsAllCases<Functions, std::variant<Cases...>&&> =
    (visitsCase<Cases, std::invocable<Functions&, Cases>>() && ...);

/// Calls the one of `functions` that takes the value's current case. A case that none of them takes is an error at
/// compile time that names it; a function of a base class serves all cases derived from it.
template <typename Variant, typename... Functions>
decltype(auto) visit(Variant&& variant, Functions&&... functions) {
  using Overloads = Overloaded<std::decay_t<Functions>...>;
  if constexpr (visitsAllCases<Overloads, decltype((std::forward<Variant>(variant).value))>) {
    return std::visit(Overloads{std::forward<Functions>(functions)...}, std::forward<Variant>(variant).value);
  }
}

}  // namespace ormel
