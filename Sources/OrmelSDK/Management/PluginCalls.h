#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/Management/Call.h"
#include "OrmelSDK/Management/PluginParams.h"
#include "OrmelSDK/Records/PluginRecords.h"

/// The calls about plugins and marketplaces, by the names of the operations that perform them.
namespace ormel::detail::calls {

Call<PluginListResponse> listPlugins(const ListPluginsParams& params);
Call<PluginListResponse> listPlugins(const ListPluginsWithRemoteSyncParams& params);
Call<PluginInstalledResponse> listInstalledPlugins(const ListInstalledPluginsParams& params);
Call<PluginReadResponse> readPlugin(const std::string& pluginName, const ReadPluginParams& params);
Call<PluginReadResponse> readPlugin(const PluginRequestTarget& target);
Call<PluginInstallResponse> installPlugin(const std::string& pluginName, const InstallPluginParams& params);
Call<PluginInstallResponse> installPlugin(const PluginRequestTarget& target, const InstallPluginTargetParams& params);
Call<PluginUninstallResponse> uninstallPlugin(const std::string& pluginID, const UninstallPluginParams& params);
Call<PluginSkillReadResponse> readPluginSkill(const std::string& remoteMarketplaceName,
                                              const std::string& remotePluginID, const std::string& skillName);
Call<PluginShareSaveResponse> savePluginShare(const std::string& pluginPath, const SavePluginShareParams& params);
Call<PluginShareUpdateTargetsResponse> updatePluginShareTargets(const std::string& remotePluginID,
                                                                PluginShareUpdateDiscoverability discoverability,
                                                                const std::vector<PluginShareTarget>& shareTargets);
Call<PluginShareListResponse> listPluginShares();
Call<PluginShareCheckoutResponse> checkoutPluginShare(const std::string& remotePluginID);
Call<PluginShareDeleteResponse> deletePluginShare(const std::string& remotePluginID);
Call<MarketplaceAddResponse> addMarketplace(const std::string& source, const AddMarketplaceParams& params);
Call<MarketplaceRemoveResponse> removeMarketplace(const std::string& marketplaceName);
Call<MarketplaceUpgradeResponse> upgradeMarketplaces(const UpgradeMarketplacesParams& params);

}  // namespace ormel::detail::calls
