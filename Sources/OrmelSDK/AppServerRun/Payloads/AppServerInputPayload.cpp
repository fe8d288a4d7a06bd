#include "OrmelSDK/AppServerRun/Payloads/AppServerInputPayload.h"

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Input/AdditionalContext.h"
#include "OrmelSDK/Input/UserInput.h"

namespace ormel::detail {

JSONValue appServerInputItems(const Input& input) {
  return visit(
      input, [](const std::string& text) { return JSONValue::array({encode(UserInput::text(text))}); },
      [](const std::vector<UserInput>& parts) { return coding::Codec<std::vector<UserInput>>::encode(parts); });
}

std::optional<JSONValue> buildAdditionalContextObject(
    const std::optional<std::map<std::string, AdditionalContextEntry>>& additionalContext) {
  if (!additionalContext || additionalContext->empty()) return std::nullopt;
  return coding::Codec<std::map<std::string, AdditionalContextEntry>>::encode(*additionalContext);
}

std::optional<JSONValue> buildEnvironmentArray(const std::optional<std::vector<TurnEnvironment>>& environments) {
  if (!environments) return std::nullopt;
  std::vector<JSONValue> elements;
  elements.reserve(environments->size());
  for (const auto& [environmentID, workingDirectory] : *environments) {
    elements.push_back(JSONValue::object({{"environmentId", environmentID}, {"cwd", workingDirectory}}));
  }
  return JSONValue::array(elements);
}

}  // namespace ormel::detail
