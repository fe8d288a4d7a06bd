#pragma once

#include <optional>
#include <vector>

#include "OrmelSDK/Handlers/DynamicTool.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// The tools as the server is told of them: first those without a namespace, then a group per namespace, in the order
/// in which they first occur. The first tool of a namespace describes the group too. Absent if there are none.
std::optional<JSONValue> buildDynamicToolsArray(const std::optional<std::vector<DynamicTool>>& dynamicTools);

/// One tool, without its namespace.
JSONValue dynamicToolFunctionSpecObject(const DynamicToolSpec& spec);

}  // namespace ormel::detail
