// Lists apps and MCP servers, and calls a tool of one of these.
// Usage: 15-apps [SERVER]

#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/Records/AppRecords.h>
#include <OrmelSDK/Records/McpServerRecords.h>

#include <iostream>

namespace {

ormel::Task<void> list(ormel::OrmelControlSession session) {
  ormel::ListAllAppsParams apps;
  apps.limit = 2;  // on a page; all of them are listed
  const auto listed = co_await session.listAllApps(apps);
  for (const ormel::AppInfo& app : listed) {
    std::cout << app.name << (app.isAccessible ? "\n" : ", not connected\n");
  }

  ormel::ListAllMcpServerStatusParams servers;
  servers.detail = ormel::McpServerStatusDetail::toolsAndAuthOnly;
  const auto statuses = co_await session.listAllMcpServerStatus(servers);
  for (const ormel::McpServerStatusSummary& server : statuses) {
    std::cout << server.name << ": " << server.tools.size() << " tools\n";
  }
  co_await session.close();
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  list(ormel.makeControlSession()).get();

  // A tool is called in a thread, whose configuration says which MCP servers there are.
  const ormel::Thread thread = ormel.startThread();
  thread.run("Which moon is it?").get();

  // The simulator has this MCP server; for another one, take what was listed.
  ormel::CallMcpServerToolParams params;
  params.arguments = ormel::JSONValue::object({{"day", "tomorrow"}});
  const ormel::McpServerToolCallResponse result =
      ormel.callMcpServerTool(thread.id().value(), "almanac", "look_up", params).get();
  for (const ormel::JSONValue& block : result.content) {
    const ormel::JSONValue* text = block.find("text");
    if (text) std::cout << text->stringValue().value_or("") << '\n';
  }
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
