#include <array>

#include "ormel-simulator/Catalogue/CataloguePage.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Catalogue/McpServers.h"
#include "ormel-simulator/Requests/AgentTime.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr double millisecondsOfASecond = 1e3;

JSONValue listServerStatus(Catalogue& catalogue, const RequestParams& params) {
  const auto detail = params.wordIfGiven("detail", {"full", "toolsAndAuthOnly"});
  if (const auto thread = params.textIfGiven("threadId")) catalogue.settings().requireThread(*thread);
  std::vector<JSONValue> statuses;
  for (const McpServer& server : knownMcpServers(catalogue.view())) {
    statuses.push_back(server.statusJSON(detail != "toolsAndAuthOnly"));
  }
  return pageOfListing("mcpServerStatus/list", statuses, "name", params);
}

void announceStartup(Catalogue& catalogue, const McpServer& server) {
  catalogue.client().notify(
      "mcpServer/startupStatus/updated",
      JSONValue::object(
          {{"name", server.name}, {"status", server.runtimeStatus}, {"error", anyMember(server.data, "fault")}}));
}

void announceOAuthLogin(Catalogue& catalogue, const std::string& name) {
  catalogue.client().notify("mcpServer/oauthLogin/completed",
                            JSONValue::object({{"name", name}, {"success", true}, {"error", {}}}));
  announceStartup(catalogue, knownMcpServer(catalogue.view(), name));
}

JSONValue startOAuthLogin(Catalogue& catalogue, const RequestParams& params) {
  const std::string name = params.text("name");
  if (const auto thread = params.textIfGiven("threadId")) catalogue.settings().requireThread(*thread);
  params.textsIfGiven("scopes");
  params.countIfGiven("timeoutSecs");
  if (!knownMcpServer(catalogue.view(), name).hasLogin()) {
    throw Refusal(invalidRequest, "the MCP server " + name + " has no login");
  }
  const auto time = catalogue.settings().loginTime;
  const double completesAt = secondsNow() + static_cast<double>(time.count()) / millisecondsOfASecond;
  catalogue.state().change([&](CatalogueDocument& state) { state.put({"mcpLogins", name}, completesAt); });
  catalogue.later().after(time, [&catalogue, name] { announceOAuthLogin(catalogue, name); });
  return JSONValue::object({{"authorizationUrl", "https://" + name + ".example/authorize"}});
}

JSONValue reloadServers(Catalogue& catalogue, const RequestParams&) {
  for (const McpServer& server : knownMcpServers(catalogue.view())) announceStartup(catalogue, server);
  return JSONValue::object();
}

McpServer connectedServer(Catalogue& catalogue, const RequestParams& params) {
  catalogue.settings().requireThread(params.text("threadId"));
  McpServer server = knownMcpServer(catalogue.view(), params.text("server"));
  if (server.isConnected()) return server;
  const auto fault = textMember(server.data, "fault");
  throw Refusal(invalidRequest,
                "the MCP server " + server.name + " is not connected: " + fault.value_or(server.runtimeStatus));
}

JSONValue readResource(Catalogue& catalogue, const RequestParams& params) {
  const std::string uri = params.text("uri");
  const McpServer server = connectedServer(catalogue, params);
  const JSONValue content = anyMember(anyMember(server.data, "contents"), uri);
  if (content.isNull()) throw Refusal(invalidParams, "the MCP server " + server.name + " has no resource " + uri);
  return JSONValue::object({{"contents", JSONValue::array({with(content, "uri", uri)})}});
}

/// The first argument that the tool requires and did not get.
std::optional<std::string> missingArgument(const JSONValue& tool, const JSONValue& arguments) {
  for (const JSONValue& key : elementsOf(anyMember(anyMember(tool, "inputSchema"), "required"))) {
    const std::string name(key.stringValue().value_or(""));
    if (anyMember(arguments, name).isNull()) return name;
  }
  return std::nullopt;
}

JSONValue callTool(Catalogue& catalogue, const RequestParams& params) {
  const std::string name = params.text("tool");
  const McpServer server = connectedServer(catalogue, params);
  const JSONValue tool = anyMember(anyMember(server.data, "tools"), name);
  if (tool.isNull()) throw Refusal(invalidParams, "the MCP server " + server.name + " has no tool " + name);
  const JSONValue arguments = anyMember(params.json(), "arguments");
  const auto missing = missingArgument(tool, arguments);
  const std::string text = missing ? "The argument " + *missing + " is missing"
                                   : "Pretended to call " + name + " with " + arguments.encode();
  JSONObjectBuilder result;
  result.set("content", JSONValue::array({JSONValue::object({{"type", "text"}, {"text", text}})}));
  result.set("isError", missing.has_value()).set("_meta", anyMember(params.json(), "_meta"));
  if (!missing) result.set("structuredContent", JSONValue::object({{"tool", name}, {"arguments", arguments}}));
  return result.build();
}

constexpr auto mcpServerRows = std::to_array<CatalogueRequest>({
    {"mcpServerStatus/list", listServerStatus},
    {"mcpServer/oauth/login", startOAuthLogin},
    {"config/mcpServer/reload", reloadServers},
    {"mcpServer/resource/read", readResource},
    {"mcpServer/tool/call", callTool},
});

}  // namespace

CatalogueRequests mcpServerRequests() { return mcpServerRows; }

}  // namespace ormel::simulator
