#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Expectations/Catalog.h"

namespace ormel::tests {

struct Mutant {
  /// A description of the change.
  std::string what;
  Definition definition;
  /// The position of the field that was changed.
  std::optional<std::size_t> field;
};

/// A definition with one thing changed at a time: each key, rule, default, word and case. A check that does not notice
/// a mutant would not notice the same fault in the library either.
std::vector<Mutant> mutantsOf(const Definition& definition);

}  // namespace ormel::tests
