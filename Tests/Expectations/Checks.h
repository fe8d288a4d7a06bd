#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "Expectations/Catalog.h"
#include "Expectations/Findings.h"
#include "Expectations/Registry.h"

namespace ormel::tests {

struct CheckScope {
  /// A check ends with this many findings.
  std::size_t most = 50;
  /// The position of the only field of a record that is checked besides the whole.
  std::optional<std::size_t> field;
};

/// Drives a registered type through everything that its definition says, and gives what is otherwise.
std::vector<Finding> check(const Catalog& catalog, const Definition& definition, const RegisteredType& type,
                           const CheckScope& scope = {});

}  // namespace ormel::tests
