#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Catalogue/PluginCatalogue.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

const JSONValue& ownHooks() {
  static const JSONValue value = JSONValue::decode(R"json([
  {"key": "system/log-commands", "eventName": "preToolUse", "handlerType": "command", "matcher": "shell",
   "command": "log-command", "timeoutSec": 5, "sourcePath": "/etc/ormel/hooks.json", "source": "system",
   "isManaged": true},
  {"key": "user/close-the-gate", "eventName": "sessionEnd", "handlerType": "command", "command": "close-the-gate",
   "timeoutSec": 30, "statusMessage": "Closing the gate", "sourcePath": "/ormel/hooks.json", "source": "user"},
  {"key": "user/second-look", "eventName": "postToolUse", "handlerType": "prompt", "matcher": "edit|write",
   "timeoutSec": 60, "additionalContextLimit": 2000, "sourcePath": "/ormel/hooks.json", "source": "user"},
  {"key": "project/ask-the-almanac", "eventName": "userPromptSubmit", "handlerType": "mcpTool", "server": "almanac",
   "tool": "look_up", "timeoutSec": 20, "sourcePath": ".ormel/hooks.json", "source": "project"}
])json");
  return value;
}

/// Tells one wording of a hook from another.
std::string hashOf(const JSONValue& hook) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char* key : {"key", "eventName", "matcher", "command", "server", "tool"}) {
    for (const char byte : textMember(hook, key).value_or("") + "\n") {
      hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
  }
  std::array<char, 17> text{};
  std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash));
  return text.data();
}

const char* trustOf(const JSONValue& choice, const std::string& hash, bool isManaged) {
  if (isManaged) return "managed";
  const auto trusted = textMember(choice, "trusted_hash");
  if (!trusted) return "untrusted";
  return *trusted == hash ? "trusted" : "modified";
}

JSONValue listedHook(const CatalogueView& view, const JSONValue& hook, int order) {
  const std::string key = textMember(hook, "key").value_or("");
  const JSONValue choice = valueAt(view.config, KeyPath{"hooks", "state", key});
  const bool isManaged = flagMember(hook, "isManaged");
  const std::string hash = hashOf(hook);
  JSONObjectBuilder added;
  added.set("displayOrder", order).set("isManaged", isManaged).set("currentHash", hash);
  added.set("enabled", isManaged || anyMember(choice, "enabled").boolValue().value_or(true));
  return merged(hook, added.set("trustStatus", trustOf(choice, hash, isManaged)).build());
}

JSONValue allHooks(const CatalogueView& view) {
  std::vector<JSONValue> hooks = elementsOf(ownHooks());
  for (const KnownPlugin& plugin : activePlugins(view)) {
    const JSONValue origin = JSONValue::object(
        {{"sourcePath", "/ormel/plugins/" + plugin.id + "/hooks.json"}, {"source", "plugin"}, {"pluginId", plugin.id}});
    for (const JSONValue& hook : elementsOf(anyMember(plugin.data, "hooks"))) hooks.push_back(merged(hook, origin));
  }
  int order = 0;
  for (JSONValue& hook : hooks) hook = listedHook(view, hook, order++);
  return JSONValue::array(hooks);
}

JSONValue listHooks(Catalogue& catalogue, const RequestParams& params) {
  const std::vector<std::string> folders =
      params.textsIfGiven("cwds").value_or(std::vector{std::filesystem::current_path().string()});
  const JSONValue hooks = allHooks(catalogue.view());
  std::vector<JSONValue> entries;
  for (const std::string& folder : folders) {
    entries.push_back(JSONValue::object(
        {{"cwd", folder}, {"hooks", hooks}, {"warnings", JSONValue::array()}, {"errors", JSONValue::array()}}));
  }
  return JSONValue::object({{"data", JSONValue::array(entries)}});
}

constexpr auto hookRows = std::to_array<CatalogueRequest>({
    {"hooks/list", listHooks},
});

}  // namespace

CatalogueRequests hookRequests() { return hookRows; }

}  // namespace ormel::simulator
