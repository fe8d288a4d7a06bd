#pragma once

#include <string>
#include <vector>

#include "Expectations/Catalog.h"
#include "Expectations/Registry.h"

namespace ormel::tests {

/// Where the library and a definition disagree.
struct Finding {
  /// The definition, and a field, case or word of it.
  std::string where;
  std::string what;
};

/// Drives a registered type through everything that its definition says, and gives what is otherwise.
std::vector<Finding> check(const Catalog& catalog, const Definition& definition, const RegisteredType& type);

}  // namespace ormel::tests
