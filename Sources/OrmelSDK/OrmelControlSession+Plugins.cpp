#include "OrmelSDK/Management/ControlSession.h"
#include "OrmelSDK/Management/PluginCalls.h"
#include "OrmelSDK/OrmelControlSession.h"

namespace ormel {

namespace calls = detail::calls;

Task<PluginListResponse> OrmelControlSession::listPlugins(const ListPluginsParams& params) const {
  return detail::perform(session_, calls::listPlugins(params));
}

Task<PluginListResponse> OrmelControlSession::listPlugins(const ListPluginsWithRemoteSyncParams& params) const {
  return detail::perform(session_, calls::listPlugins(params));
}

Task<PluginInstalledResponse> OrmelControlSession::listInstalledPlugins(
    const ListInstalledPluginsParams& params) const {
  return detail::perform(session_, calls::listInstalledPlugins(params));
}

Task<PluginReadResponse> OrmelControlSession::readPlugin(const std::string& pluginName,
                                                         const ReadPluginParams& params) const {
  return detail::perform(session_, calls::readPlugin(pluginName, params));
}

Task<PluginInstallResponse> OrmelControlSession::installPlugin(const std::string& pluginName,
                                                               const InstallPluginParams& params) const {
  return detail::perform(session_, calls::installPlugin(pluginName, params));
}

Task<PluginUninstallResponse> OrmelControlSession::uninstallPlugin(const std::string& pluginID,
                                                                   const UninstallPluginParams& params) const {
  return detail::perform(session_, calls::uninstallPlugin(pluginID, params));
}

}  // namespace ormel
