#include "OrmelSDK/AppServerRun/Payloads/AppServerDynamicToolsPayload.h"

#include <cstddef>
#include <map>
#include <string_view>

namespace ormel::detail {

namespace {

struct NamespaceGroup {
  const DynamicToolSpec* first;
  std::vector<JSONValue> tools;
};

JSONValue groupObject(const NamespaceGroup& group) {
  return JSONValue::object({{"type", "namespace"},
                            {"name", *group.first->namespace_},
                            {"description", group.first->description},
                            {"tools", JSONValue::array(group.tools)}});
}

}  // namespace

std::optional<JSONValue> buildDynamicToolsArray(const std::optional<std::vector<DynamicTool>>& dynamicTools) {
  if (!dynamicTools || dynamicTools->empty()) return std::nullopt;
  std::vector<JSONValue> tools;
  std::vector<NamespaceGroup> groups;
  std::map<std::string_view, std::size_t> groupIndices;
  for (const auto& [spec, execute] : *dynamicTools) {
    JSONValue function = dynamicToolFunctionSpecObject(spec);
    if (!spec.namespace_ || spec.namespace_->empty()) {
      tools.push_back(std::move(function));
      continue;
    }
    const auto [found, isNew] = groupIndices.try_emplace(*spec.namespace_, groups.size());
    if (isNew) groups.push_back({&spec, {}});
    groups[found->second].tools.push_back(std::move(function));
  }
  for (const auto& group : groups) tools.push_back(groupObject(group));
  return JSONValue::array(tools);
}

JSONValue dynamicToolFunctionSpecObject(const DynamicToolSpec& spec) {
  JSONObjectBuilder function;
  function.set("type", "function");
  function.set("name", spec.name);
  function.set("description", spec.description);
  function.set("inputSchema", spec.inputSchema);
  if (spec.deferLoading) function.set("deferLoading", true);
  return function.build();
}

}  // namespace ormel::detail
