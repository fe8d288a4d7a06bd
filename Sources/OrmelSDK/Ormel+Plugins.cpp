#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Management/PluginCalls.h"
#include "OrmelSDK/Ormel.h"

namespace ormel {

namespace calls = detail::calls;

Task<PluginListResponse> Ormel::listPlugins(const ListPluginsParams& params) const {
  return detail::perform(performer(), calls::listPlugins(params));
}

Task<PluginListResponse> Ormel::listPlugins(const ListPluginsWithRemoteSyncParams& params) const {
  return detail::perform(performer(), calls::listPlugins(params));
}

Task<PluginInstalledResponse> Ormel::listInstalledPlugins(const ListInstalledPluginsParams& params) const {
  return detail::perform(performer(), calls::listInstalledPlugins(params));
}

Task<PluginReadResponse> Ormel::readPlugin(const std::string& pluginName, const ReadPluginParams& params) const {
  return detail::perform(performer(), calls::readPlugin(pluginName, params));
}

Task<PluginReadResponse> Ormel::readPlugin(const PluginRequestTarget& target) const {
  return detail::perform(performer(), calls::readPlugin(target));
}

Task<PluginInstallResponse> Ormel::installPlugin(const std::string& pluginName,
                                                 const InstallPluginParams& params) const {
  return detail::perform(performer(), calls::installPlugin(pluginName, params));
}

Task<PluginInstallResponse> Ormel::installPlugin(const PluginRequestTarget& target,
                                                 const InstallPluginTargetParams& params) const {
  return detail::perform(performer(), calls::installPlugin(target, params));
}

Task<PluginUninstallResponse> Ormel::uninstallPlugin(const std::string& pluginID,
                                                     const UninstallPluginParams& params) const {
  return detail::perform(performer(), calls::uninstallPlugin(pluginID, params));
}

Task<PluginSkillReadResponse> Ormel::readPluginSkill(const std::string& remoteMarketplaceName,
                                                     const std::string& remotePluginID,
                                                     const std::string& skillName) const {
  return detail::perform(performer(), calls::readPluginSkill(remoteMarketplaceName, remotePluginID, skillName));
}

Task<PluginShareSaveResponse> Ormel::savePluginShare(const std::string& pluginPath,
                                                     const SavePluginShareParams& params) const {
  return detail::perform(performer(), calls::savePluginShare(pluginPath, params));
}

Task<PluginShareUpdateTargetsResponse> Ormel::updatePluginShareTargets(
    const std::string& remotePluginID, PluginShareUpdateDiscoverability discoverability,
    const std::vector<PluginShareTarget>& shareTargets) const {
  return detail::perform(performer(), calls::updatePluginShareTargets(remotePluginID, discoverability, shareTargets));
}

Task<PluginShareListResponse> Ormel::listPluginShares() const {
  return detail::perform(performer(), calls::listPluginShares());
}

Task<PluginShareCheckoutResponse> Ormel::checkoutPluginShare(const std::string& remotePluginID) const {
  return detail::perform(performer(), calls::checkoutPluginShare(remotePluginID));
}

Task<PluginShareDeleteResponse> Ormel::deletePluginShare(const std::string& remotePluginID) const {
  return detail::perform(performer(), calls::deletePluginShare(remotePluginID));
}

Task<MarketplaceAddResponse> Ormel::addMarketplace(const std::string& source,
                                                   const AddMarketplaceParams& params) const {
  return detail::perform(performer(), calls::addMarketplace(source, params));
}

Task<MarketplaceRemoveResponse> Ormel::removeMarketplace(const std::string& marketplaceName) const {
  return detail::perform(performer(), calls::removeMarketplace(marketplaceName));
}

Task<MarketplaceUpgradeResponse> Ormel::upgradeMarketplaces(const UpgradeMarketplacesParams& params) const {
  return detail::perform(performer(), calls::upgradeMarketplaces(params));
}

}  // namespace ormel
