#include "OrmelSDK/Management/PluginCalls.h"

#include "OrmelSDK/Coding/ParamsTable.h"

namespace ormel::detail::calls {

namespace {

/// Puts the marketplace of a target into the params of a call; the name of its plugin is left to be sent.
template <typename Params>
std::string placed(const PluginRequestTarget& target, Params& params) {
  return visit(
      target,
      [&](const LocalPluginRequestTarget& local) {
        params.marketplacePath = local.marketplacePath;
        return local.pluginName;
      },
      [&](const RemotePluginRequestTarget& remote) {
        params.remoteMarketplaceName = remote.marketplaceName;
        return remote.pluginName;
      });
}

}  // namespace

Call<PluginListResponse> listPlugins(const ListPluginsParams& params) {
  return {"plugin/list", coding::encodeParams(params)};
}

Call<PluginListResponse> listPlugins(const ListPluginsWithRemoteSyncParams& params) {
  return {"plugin/list", coding::encodeParams(params)};
}

Call<PluginInstalledResponse> listInstalledPlugins(const ListInstalledPluginsParams& params) {
  return {"plugin/installed", coding::encodeParams(params)};
}

Call<PluginReadResponse> readPlugin(const std::string& pluginName, const ReadPluginParams& params) {
  return {"plugin/read", callParams({{"pluginName", pluginName}}, params)};
}

Call<PluginReadResponse> readPlugin(const PluginRequestTarget& target) {
  ReadPluginParams params;
  const std::string pluginName = placed(target, params);
  return readPlugin(pluginName, params);
}

Call<PluginInstallResponse> installPlugin(const std::string& pluginName, const InstallPluginParams& params) {
  return {"plugin/install", callParams({{"pluginName", pluginName}}, params)};
}

Call<PluginInstallResponse> installPlugin(const PluginRequestTarget& target, const InstallPluginTargetParams& params) {
  InstallPluginParams all;
  const std::string pluginName = placed(target, all);
  all.forceRemoteSync = params.forceRemoteSync;
  return installPlugin(pluginName, all);
}

Call<PluginUninstallResponse> uninstallPlugin(const std::string& pluginID, const UninstallPluginParams& params) {
  return {"plugin/uninstall", callParams({{"pluginId", pluginID}}, params)};
}

Call<PluginSkillReadResponse> readPluginSkill(const std::string& remoteMarketplaceName,
                                              const std::string& remotePluginID, const std::string& skillName) {
  return {"plugin/skill/read", callParams({{"remoteMarketplaceName", remoteMarketplaceName},
                                           {"remotePluginId", remotePluginID},
                                           {"skillName", skillName}})};
}

Call<PluginShareSaveResponse> savePluginShare(const std::string& pluginPath, const SavePluginShareParams& params) {
  return {"plugin/share/save", callParams({{"pluginPath", pluginPath}}, params)};
}

Call<PluginShareUpdateTargetsResponse> updatePluginShareTargets(const std::string& remotePluginID,
                                                                PluginShareUpdateDiscoverability discoverability,
                                                                const std::vector<PluginShareTarget>& shareTargets) {
  return {"plugin/share/updateTargets", callParams({{"remotePluginId", remotePluginID},
                                                    {"discoverability", rawValue(discoverability)},
                                                    {"shareTargets", argument(shareTargets)}})};
}

Call<PluginShareListResponse> listPluginShares() { return {"plugin/share/list", callParams({})}; }

Call<PluginShareCheckoutResponse> checkoutPluginShare(const std::string& remotePluginID) {
  return {"plugin/share/checkout", callParams({{"remotePluginId", remotePluginID}})};
}

Call<PluginShareDeleteResponse> deletePluginShare(const std::string& remotePluginID) {
  return {"plugin/share/delete", callParams({{"remotePluginId", remotePluginID}})};
}

Call<MarketplaceAddResponse> addMarketplace(const std::string& source, const AddMarketplaceParams& params) {
  return {"marketplace/add", callParams({{"source", source}}, params)};
}

Call<MarketplaceRemoveResponse> removeMarketplace(const std::string& marketplaceName) {
  return {"marketplace/remove", callParams({{"marketplaceName", marketplaceName}})};
}

Call<MarketplaceUpgradeResponse> upgradeMarketplaces(const UpgradeMarketplacesParams& params) {
  return {"marketplace/upgrade", coding::encodeParams(params)};
}

}  // namespace ormel::detail::calls
