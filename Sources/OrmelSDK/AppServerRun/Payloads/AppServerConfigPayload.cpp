#include "OrmelSDK/AppServerRun/Payloads/AppServerConfigPayload.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"
#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Input/ThreadChoices.h"

namespace ormel::detail {

namespace {

using Config = std::map<std::string, JSONValue>;

bool hasJSONForm(const OrmelConfigValue& value) {
  if (const auto* number = value.doubleValue()) return std::isfinite(*number);
  if (const auto* elements = value.arrayValue()) return std::ranges::all_of(*elements, hasJSONForm);
  if (const auto* members = value.objectValue()) {
    return std::ranges::all_of(*members, [](const auto& member) { return hasJSONForm(member.second); });
  }
  return true;
}

void merge(const std::optional<OrmelConfigValue::Object>& overrides, Config& config) {
  if (!overrides) return;
  for (const auto& [key, value] : *overrides) {
    if (hasJSONForm(value)) config.insert_or_assign(key, configValueToJSONValue(value));
  }
}

// Retired words are sent as what became of them; words that only the server knows are left to it.
void renewApprovalPolicy(Config& config) {
  const auto found = config.find("approval_policy");
  if (found == config.end()) return;
  const auto word = found->second.stringValue();
  const auto mode = word ? ApprovalMode::fromRawValue(*word) : std::nullopt;
  if (mode) found->second = mode->jsonValue();
}

template <typename Value>
void enterIfPresent(Config& config, std::string key, const std::optional<Value>& value) {
  if (value) config.insert_or_assign(std::move(key), coding::Codec<Value>::encode(*value));
}

std::optional<WebSearchMode> webSearch(const ThreadOptions& options) {
  if (options.webSearchMode || !options.webSearchEnabled) return options.webSearchMode;
  return *options.webSearchEnabled ? WebSearchMode::live : WebSearchMode::disabled;
}

}  // namespace

JSONValue buildConfigObject(const ThreadOptions& threadOptions, const OrmelOptions& ormelOptions) {
  Config config;
  merge(ormelOptions.config, config);
  merge(threadOptions.configOverrides, config);
  renewApprovalPolicy(config);
  enterIfPresent(config, "web_search", webSearch(threadOptions));
  enterIfPresent(config, "model_reasoning_summary", threadOptions.modelReasoningSummary);
  enterIfPresent(config, "model_verbosity", threadOptions.modelVerbosity);
  enterIfPresent(config, "model_context_window", threadOptions.modelContextWindow);
  enterIfPresent(config, "model_auto_compact_token_limit", threadOptions.modelAutoCompactTokenLimit);
  return coding::Codec<Config>::encode(configJSONEnablingRequiredSDKFeatures(std::move(config)));
}

}  // namespace ormel::detail
