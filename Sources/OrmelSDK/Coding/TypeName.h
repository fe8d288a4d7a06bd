#pragma once

#include <string_view>

namespace ormel::coding {

/// The unqualified name of a class or enumeration, for error texts.
template <typename T>
constexpr std::string_view typeName() noexcept {
  std::string_view signature = __PRETTY_FUNCTION__;
  const auto start = signature.find("T = ") + 4;
  const auto end = signature.find_first_of(";]", start);
  std::string_view name = signature.substr(start, end - start);
  if (const auto colons = name.rfind("::"); colons != std::string_view::npos) name.remove_prefix(colons + 2);
  return name;
}

}  // namespace ormel::coding
