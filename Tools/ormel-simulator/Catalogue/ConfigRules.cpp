#include "ormel-simulator/Catalogue/ConfigRules.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "ormel-simulator/Catalogue/JSONEditing.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

bool isOneOf(const JSONValue& value, std::initializer_list<std::string_view> words) {
  const auto text = value.stringValue();
  return text && std::find(words.begin(), words.end(), *text) != words.end();
}

bool isConfigText(const JSONValue& value) { return value.stringValue().has_value(); }
bool isConfigFlag(const JSONValue& value) { return value.boolValue().has_value(); }
bool isConfigTable(const JSONValue& value) { return value.objectValue() != nullptr; }

bool isApprovalPolicy(const JSONValue& value) {
  const JSONValue granular = anyMember(value, "granular");
  return granular.objectValue() || isOneOf(value, {"untrusted", "on-request", "on-failure", "never"});
}
bool isReviewer(const JSONValue& value) { return isOneOf(value, {"user", "auto_review", "guardian_subagent"}); }
bool isSandboxMode(const JSONValue& value) {
  return isOneOf(value, {"read-only", "workspace-write", "danger-full-access"});
}
bool isWebSearchMode(const JSONValue& value) { return isOneOf(value, {"disabled", "cached", "live"}); }

bool isSkillSwitch(const JSONValue& value) {
  return anyMember(value, "enabled").boolValue() && (textMember(value, "name") || textMember(value, "path"));
}
bool areSkillSwitches(const JSONValue& value) {
  const auto* elements = value.arrayValue();
  return elements && std::all_of(elements->begin(), elements->end(), isSkillSwitch);
}

struct ConfigRule {
  /// "*" stands for any key.
  std::array<std::string_view, 4> path;
  bool (*fits)(const JSONValue&);
  std::string_view demand;
};

constexpr std::string_view mustBeText = "must be a text";
constexpr std::string_view mustBeFlag = "must be true or false";
constexpr std::string_view mustBeTable = "must be an object";
constexpr std::string_view mustBeReviewer = "must be one of: user, auto_review, guardian_subagent";

constexpr auto configRules = std::to_array<ConfigRule>({
    {{"model"}, isConfigText, mustBeText},
    {{"model_provider"}, isConfigText, mustBeText},
    {{"model_reasoning_effort"}, isConfigText, mustBeText},
    {{"approval_policy"}, isApprovalPolicy, "must be one of: untrusted, on-request, on-failure, never"},
    {{"approvals_reviewer"}, isReviewer, mustBeReviewer},
    {{"sandbox_mode"}, isSandboxMode, "must be one of: read-only, workspace-write, danger-full-access"},
    {{"web_search"}, isWebSearchMode, "must be one of: disabled, cached, live"},
    {{"features"}, isConfigTable, mustBeTable},
    {{"features", "*"}, isConfigFlag, mustBeFlag},
    {{"plugins"}, isConfigTable, mustBeTable},
    {{"plugins", "*"}, isConfigTable, mustBeTable},
    {{"plugins", "*", "enabled"}, isConfigFlag, mustBeFlag},
    {{"apps"}, isConfigTable, mustBeTable},
    {{"apps", "*"}, isConfigTable, mustBeTable},
    {{"apps", "*", "enabled"}, isConfigFlag, mustBeFlag},
    {{"apps", "*", "approvals_reviewer"}, isReviewer, mustBeReviewer},
    {{"apps", "*", "approvalsReviewer"}, isReviewer, mustBeReviewer},
    {{"skills"}, isConfigTable, mustBeTable},
    {{"skills", "config"}, areSkillSwitches, "must be a list of objects with enabled, and with name or path"},
    {{"hooks"}, isConfigTable, mustBeTable},
    {{"hooks", "state"}, isConfigTable, mustBeTable},
    {{"hooks", "state", "*"}, isConfigTable, mustBeTable},
    {{"hooks", "state", "*", "enabled"}, isConfigFlag, mustBeFlag},
    {{"mcp_servers"}, isConfigTable, mustBeTable},
    {{"mcp_servers", "*"}, isConfigTable, mustBeTable},
    {{"mcp_servers", "*", "enabled"}, isConfigFlag, mustBeFlag},
});

void checkByRule(const ConfigRule& rule, std::span<const std::string_view> path, const JSONValue& value,
                 const std::string& place) {
  if (path.empty() || path.front().empty()) {
    if (!rule.fits(value)) throw Refusal(invalidParams, "config key " + place + " " + std::string(rule.demand));
    return;
  }
  const auto* members = value.objectValue();
  if (!members) return;
  for (const auto& [key, member] : *members) {
    if (path.front() != "*" && path.front() != key) continue;
    checkByRule(rule, path.subspan(1), member, place.empty() ? std::string(key) : place + "." + std::string(key));
  }
}

}  // namespace

void checkConfig(const JSONValue& config) {
  for (const ConfigRule& rule : configRules) checkByRule(rule, rule.path, config, "");
}

}  // namespace ormel::simulator
