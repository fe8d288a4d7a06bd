#pragma once

#include <optional>
#include <string>

#include "ormel-simulator/Scenario/Scenario.h"
#include "ormel-simulator/Scenario/Variables.h"

namespace ormel::simulator {

/// Compares `actual`, which messages call `path`, with the example.
///
/// Returns the first difference in words, or nothing if there is none; only then are the example's captures
/// entered into `variables`. Fails with `UnsetVariable`.
std::optional<std::string> difference(const Example& example, const JSONValue& actual, const std::string& path,
                                      Variables& variables);

}  // namespace ormel::simulator
