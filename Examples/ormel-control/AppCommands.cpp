#include "AppCommands.h"

#include <utility>

#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "OrmelSDK/Records/PluginRecords.h"
#include "Values.h"

namespace ormel::control {

namespace {

std::string versionOf(const McpServerStatusSummary& server) {
  const JSONValue* version = server.serverInfo ? server.serverInfo->find("version") : nullptr;
  return version ? plainText(*version) : "";
}

std::string toolsOf(const McpServerStatusSummary& server) {
  std::vector<std::string> names;
  names.reserve(server.tools.size());
  for (const auto& [name, definition] : server.tools) names.push_back(name);
  return joined(names);
}

std::string descriptionOf(const PluginSummary& plugin) {
  if (!plugin.interface) return "";
  return plugin.interface->shortDescription.value_or(plugin.interface->displayName.value_or(""));
}

std::string stateOf(const PluginSummary& plugin) {
  if (plugin.installed) return plugin.enabled ? "enabled" : "disabled";
  return plugin.availability == PluginAvailability::available ? "available" : "not available";
}

Report reportOn(JSONValue document, const std::vector<PluginMarketplaceEntry>& marketplaces,
                const std::vector<MarketplaceLoadErrorInfo>& errors, std::string whenEmpty) {
  Report report;
  report.document = std::move(document);
  Table table{{{"PLUGIN", true}, "STATE", "VERSION", "MARKETPLACE", "DESCRIPTION"}, {}, std::move(whenEmpty)};
  for (const PluginMarketplaceEntry& marketplace : marketplaces) {
    for (const PluginSummary& plugin : marketplace.plugins) {
      table.rows.push_back({plugin.id, stateOf(plugin), plugin.localVersion.value_or(plugin.version.value_or("")),
                            marketplace.name, descriptionOf(plugin)});
    }
  }
  report.tables.push_back(std::move(table));
  for (const MarketplaceLoadErrorInfo& error : errors) {
    report.remarks.push_back(error.marketplacePath + ": " + error.message);
  }
  return report;
}

}  // namespace

Task<Report> listApps(Server server) {
  const auto apps = co_await server.session.listAllApps();
  Report report;
  report.document = documentOf(apps);
  Table table{
      {{"APP", true}, "NAME", "ACCESSIBLE", "ENABLED", "DESCRIPTION"}, {}, "The server's catalogue has no apps."};
  for (const AppInfo& app : apps) {
    table.rows.push_back(
        {app.id, app.name, yesOrNo(app.isAccessible), yesOrNo(app.isEnabled), app.description.value_or("")});
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> listInstalledApps(Server server) {
  const AppsInstalledResponse response = co_await server.session.listInstalledApps();
  Report report;
  report.document = encode(response);
  Table table{{{"APP", true}, "NAME", "ENABLED", "CALLABLE"}, {}, "No apps are installed."};
  for (const InstalledApp& app : response.apps) {
    table.rows.push_back({app.id, app.runtimeName.value_or(""), yesOrNo(app.enabled), yesOrNo(app.callable)});
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> listMcpServers(Server server) {
  const auto servers = co_await server.session.listAllMcpServerStatus();
  Report report;
  report.document = documentOf(servers);
  Table table{{{"SERVER", true}, "STATUS", "LOGIN", "VERSION", "RESOURCES", "TOOLS"}, {}, "There are no MCP servers."};
  for (const McpServerStatusSummary& status : servers) {
    table.rows.push_back({status.name, status.runtimeStatus ? status.runtimeStatus->rawValue : "",
                          status.authStatus.rawValue, versionOf(status), std::to_string(status.resources.size()),
                          toolsOf(status)});
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> listPlugins(Server server, std::string directory) {
  ListPluginsParams params;
  params.cwds.emplace().push_back(std::move(directory));
  const PluginListResponse response = co_await server.session.listPlugins(params);
  Report report = reportOn(encode(response), response.marketplaces, response.marketplaceLoadErrors,
                           "The marketplaces have no plugins.");
  if (response.remoteSyncError) report.remarks.push_back(*response.remoteSyncError);
  co_return report;
}

Task<Report> listInstalledPlugins(Server server, std::string directory) {
  ListInstalledPluginsParams params;
  params.cwds.emplace().push_back(std::move(directory));
  const PluginInstalledResponse response = co_await server.session.listInstalledPlugins(params);
  co_return reportOn(encode(response), response.marketplaces, response.marketplaceLoadErrors,
                     "No plugins are installed.");
}

}  // namespace ormel::control
