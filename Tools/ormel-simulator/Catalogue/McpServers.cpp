#include "ormel-simulator/Catalogue/McpServers.h"

#include <algorithm>
#include <utility>

#include "ormel-simulator/Catalogue/McpServerData.h"
#include "ormel-simulator/Catalogue/PluginCatalogue.h"
#include "ormel-simulator/Requests/AgentTime.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

const JSONValue& configuredMcpServer() {
  static const JSONValue value = JSONValue::decode(R"json({
  "authStatus": "unsupported",
  "tools": {"echo": {"name": "echo", "description": "Says what it was told", "inputSchema": {"type": "object"}}},
  "resources": [], "resourceTemplates": [], "contents": {}
})json");
  return value;
}

bool isLoggedInto(const CatalogueView& view, const std::string& name) {
  const auto completesAt = view.state.at({"mcpLogins", name}).numberValue();
  return completesAt && *completesAt <= secondsNow();
}

McpServer mcpServer(const CatalogueView& view, const JSONValue& data, const std::string& name) {
  McpServer server{.name = name,
                   .data = data,
                   .runtimeStatus = "connected",
                   .authStatus = textMember(data, "authStatus").value_or("")};
  if (server.hasLogin() && !isLoggedInto(view, name)) {
    server.authStatus = "notLoggedIn";
    server.runtimeStatus = "authenticationRequired";
  }
  if (!anyMember(data, "fault").isNull()) server.runtimeStatus = "failed";
  const auto enabled = valueAt(view.config, KeyPath{"mcp_servers", name, "enabled"}).boolValue();
  if (!enabled.value_or(true)) server.runtimeStatus = "disabled";
  return server;
}

bool isThere(const JSONValue& data, const std::vector<KnownPlugin>& active) {
  const auto plugin = textMember(data, "plugin");
  return !plugin ||
         std::any_of(active.begin(), active.end(), [&](const KnownPlugin& one) { return one.id == *plugin; });
}

bool holdsServer(const std::vector<McpServer>& servers, const std::string& name) {
  return std::any_of(servers.begin(), servers.end(), [&](const McpServer& server) { return server.name == name; });
}

}  // namespace

bool McpServer::hasLogin() const { return textMember(data, "authStatus") == "oAuth"; }

JSONValue McpServer::statusJSON(bool isFull) const {
  JSONObjectBuilder members;
  members.set("name", name).set("runtimeStatus", runtimeStatus).set("authStatus", authStatus);
  members.set("pluginId", anyMember(data, "plugin"));
  members.set("tools", isConnected() ? anyMember(data, "tools") : JSONValue::object());
  const bool tellsAll = isFull && isConnected();
  if (tellsAll) members.set("serverInfo", anyMember(data, "serverInfo"));
  for (const char* key : {"resources", "resourceTemplates"}) {
    members.set(key, tellsAll ? anyMember(data, key) : JSONValue::array());
  }
  return members.build();
}

std::vector<McpServer> knownMcpServers(const CatalogueView& view) {
  const std::vector<KnownPlugin> active = activePlugins(view);
  std::vector<McpServer> servers;
  for (const JSONValue& data : elementsOf(mcpServerDescriptions())) {
    if (isThere(data, active)) servers.push_back(mcpServer(view, data, textMember(data, "name").value_or("")));
  }
  const JSONValue added = configuredMcpServer();
  for (const std::string& name : keysOf(anyMember(view.config, "mcp_servers"))) {
    if (!holdsServer(servers, name)) servers.push_back(mcpServer(view, added, name));
  }
  return servers;
}

McpServer knownMcpServer(const CatalogueView& view, const std::string& name) {
  for (McpServer& server : knownMcpServers(view)) {
    if (server.name == name) return std::move(server);
  }
  throw Refusal(invalidParams, "there is no MCP server " + name);
}

}  // namespace ormel::simulator
