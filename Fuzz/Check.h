#pragma once

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace ormel::fuzzing {

/// Ends the process, so that the fuzzer reports its input, when what must hold does not.
template <typename Value>
void expect(bool holds, std::string_view rule, const Value& value) {
  if (holds) return;
  std::cerr << "Broken: " << rule << "\n" << value << std::endl;
  std::abort();
}

}  // namespace ormel::fuzzing
