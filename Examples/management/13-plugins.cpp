// Looks for plugins that can be installed, and installs the first one for a moment.
// Usage: 13-plugins [SERVER]

#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/Records/PluginRecords.h>

#include <iostream>
#include <optional>

namespace {

/// Names a plugin as the calls about a single one want it: by its marketplace and its name there.
ormel::PluginRequestTarget targetOf(const ormel::PluginMarketplaceEntry& marketplace,
                                    const ormel::PluginSummary& plugin) {
  if (marketplace.path) return ormel::PluginRequestTarget::local(*marketplace.path, plugin.name);
  return ormel::PluginRequestTarget::remote(marketplace.name, plugin.name);
}

std::optional<ormel::PluginRequestTarget> firstToInstall(const ormel::PluginListResponse& list) {
  for (const ormel::PluginMarketplaceEntry& marketplace : list.marketplaces) {
    for (const ormel::PluginSummary& plugin : marketplace.plugins) {
      const bool isOpen = plugin.installPolicy == ormel::PluginInstallPolicy::available;
      if (isOpen && !plugin.installed) return targetOf(marketplace, plugin);
    }
  }
  return std::nullopt;
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  ormel::ListPluginsParams params;
  params.forceRefetch = true;
  const ormel::PluginListResponse list = ormel.listPlugins(params).get();
  for (const ormel::PluginMarketplaceEntry& marketplace : list.marketplaces) {
    std::cout << marketplace.name << ": " << marketplace.plugins.size() << " plugins\n";
  }

  const auto target = firstToInstall(list);
  if (!target) return 0;
  const ormel::PluginDetail plugin = ormel.readPlugin(*target).get().plugin;
  std::cout << plugin.summary.id << " brings " << plugin.skills.size() << " skills\n";

  const ormel::PluginInstallResponse installation = ormel.installPlugin(*target).get();
  for (const ormel::AppSummary& app : installation.appsNeedingAuth) std::cout << "Sign in to " << app.name << '\n';

  ormel.uninstallPlugin(plugin.summary.id).get();
  std::cout << "removed\n";
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
