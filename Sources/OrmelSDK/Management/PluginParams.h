#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Records/PluginShareTarget.h"

// The optional arguments of the calls about plugins and marketplaces. One that is given is sent, also when it is empty;
// one that is absent is left to the server.
namespace ormel {

enum class PluginListMarketplaceKind;
enum class PluginShareDiscoverability;
enum class PluginShareUpdateDiscoverability;

/// A plugin of a marketplace on this machine.
struct LocalPluginRequestTarget {
  std::string marketplacePath;
  std::string pluginName;
  friend bool operator==(const LocalPluginRequestTarget&, const LocalPluginRequestTarget&);
};

/// A plugin of a marketplace that the server reaches over the network.
struct RemotePluginRequestTarget {
  std::string marketplaceName;
  std::string pluginName;
  friend bool operator==(const RemotePluginRequestTarget&, const RemotePluginRequestTarget&);
};

/// Names a plugin together with its marketplace. Use `visit` to tell the cases apart. It has no JSON form.
struct PluginRequestTarget {
  std::variant<LocalPluginRequestTarget, RemotePluginRequestTarget> value;

  PluginRequestTarget(LocalPluginRequestTarget target) : value(std::move(target)) {}
  PluginRequestTarget(RemotePluginRequestTarget target) : value(std::move(target)) {}

  static PluginRequestTarget local(std::string marketplacePath, std::string pluginName) {
    return LocalPluginRequestTarget{std::move(marketplacePath), std::move(pluginName)};
  }
  static PluginRequestTarget remote(std::string marketplaceName, std::string pluginName) {
    return RemotePluginRequestTarget{std::move(marketplaceName), std::move(pluginName)};
  }

  friend bool operator==(const PluginRequestTarget&, const PluginRequestTarget&);
};

/// Narrows `listPlugins`.
struct ListPluginsParams {
  ListPluginsParams() {}
  /// The directories whose plugins are listed.
  std::optional<std::vector<std::string>> cwds;
  /// Whether the server asks its marketplaces again.
  bool forceRefetch = false;
  std::optional<std::vector<PluginListMarketplaceKind>> marketplaceKinds;
};

/// The same under the older name of its flag.
struct ListPluginsWithRemoteSyncParams {
  ListPluginsWithRemoteSyncParams() {}
  /// The directories whose plugins are listed.
  std::optional<std::vector<std::string>> cwds;
  /// Sent as `forceRefetch`.
  bool forceRemoteSync = false;
  std::optional<std::vector<PluginListMarketplaceKind>> marketplaceKinds;
};

/// Narrows `listInstalledPlugins`.
struct ListInstalledPluginsParams {
  ListInstalledPluginsParams() {}
  /// The directories whose plugins are listed.
  std::optional<std::vector<std::string>> cwds;
  /// Plugins that are listed although they are not installed, to suggest them.
  std::optional<std::vector<std::string>> installSuggestionPluginNames;
};

/// Names the marketplace of `readPlugin`.
struct ReadPluginParams {
  ReadPluginParams() {}
  /// The path of a marketplace on this machine.
  std::optional<std::string> marketplacePath;
  std::optional<std::string> remoteMarketplaceName;
};

/// Names the marketplace of `installPlugin`, and says how it is used.
struct InstallPluginParams {
  InstallPluginParams() {}
  /// The path of a marketplace on this machine.
  std::optional<std::string> marketplacePath;
  std::optional<std::string> remoteMarketplaceName;
  /// Whether the server fetches the marketplace's present state first.
  bool forceRemoteSync = false;
};

/// Says how the marketplace of an `installPlugin` that names its target is used.
struct InstallPluginTargetParams {
  InstallPluginTargetParams() {}
  /// Whether the server fetches the marketplace's present state first.
  bool forceRemoteSync = false;
};

/// Says how the marketplace of `uninstallPlugin` is used.
struct UninstallPluginParams {
  UninstallPluginParams() {}
  /// Whether the server fetches the marketplace's present state first.
  bool forceRemoteSync = false;
};

/// Says what is shared by `savePluginShare`, and with whom.
struct SavePluginShareParams {
  SavePluginShareParams() {}
  /// The shared plugin that is replaced; a new one is made if absent.
  std::optional<std::string> remotePluginID;
  std::optional<PluginShareDiscoverability> discoverability;
  std::optional<std::vector<PluginShareTarget>> shareTargets;
};

/// Says what of a repository `addMarketplace` takes.
struct AddMarketplaceParams {
  AddMarketplaceParams() {}
  /// A branch, tag or commit.
  std::optional<std::string> refName;
  /// The paths that are checked out; all of them if absent.
  std::optional<std::vector<std::string>> sparsePaths;
};

/// Narrows `upgradeMarketplaces`.
struct UpgradeMarketplacesParams {
  UpgradeMarketplacesParams() {}
  /// All of them if absent.
  std::optional<std::string> marketplaceName;
};

}  // namespace ormel
