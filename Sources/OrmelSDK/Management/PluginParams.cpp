#include "OrmelSDK/Management/PluginParams.h"

#include "OrmelSDK/Coding/ParamsTable.h"
#include "OrmelSDK/Records/PluginRecords.h"

template <>
struct ormel::coding::ParamsTable<ormel::ListPluginsParams> {
  using P = ListPluginsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cwds>("cwds"),
      ifTrue<&P::forceRefetch>("forceRefetch"),
      ifGiven<&P::marketplaceKinds>("marketplaceKinds"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListPluginsWithRemoteSyncParams> {
  using P = ListPluginsWithRemoteSyncParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cwds>("cwds"),
      ifTrue<&P::forceRemoteSync>("forceRefetch"),
      ifGiven<&P::marketplaceKinds>("marketplaceKinds"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListInstalledPluginsParams> {
  using P = ListInstalledPluginsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cwds>("cwds"),
      ifGiven<&P::installSuggestionPluginNames>("installSuggestionPluginNames"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ReadPluginParams> {
  using P = ReadPluginParams;
  static constexpr Field fields[] = {
      ifGiven<&P::marketplacePath>("marketplacePath"),
      ifGiven<&P::remoteMarketplaceName>("remoteMarketplaceName"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::InstallPluginParams> {
  using P = InstallPluginParams;
  static constexpr Field fields[] = {
      ifGiven<&P::marketplacePath>("marketplacePath"),
      ifGiven<&P::remoteMarketplaceName>("remoteMarketplaceName"),
      ifTrue<&P::forceRemoteSync>("forceRemoteSync"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::UninstallPluginParams> {
  static constexpr Field fields[] = {
      ifTrue<&UninstallPluginParams::forceRemoteSync>("forceRemoteSync"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::SavePluginShareParams> {
  using P = SavePluginShareParams;
  static constexpr Field fields[] = {
      ifGiven<&P::remotePluginID>("remotePluginId"),
      ifGiven<&P::discoverability>("discoverability"),
      ifGiven<&P::shareTargets>("shareTargets"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::AddMarketplaceParams> {
  using P = AddMarketplaceParams;
  static constexpr Field fields[] = {
      ifGiven<&P::refName>("refName"),
      ifGiven<&P::sparsePaths>("sparsePaths"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::UpgradeMarketplacesParams> {
  static constexpr Field fields[] = {
      ifGiven<&UpgradeMarketplacesParams::marketplaceName>("marketplaceName"),
  };
};

ORMEL_DEFINE_EQUALITY(LocalPluginRequestTarget)
ORMEL_DEFINE_EQUALITY(RemotePluginRequestTarget)
ORMEL_DEFINE_EQUALITY(PluginRequestTarget)
ORMEL_DEFINE_PARAMS(ListPluginsParams)
ORMEL_DEFINE_PARAMS(ListPluginsWithRemoteSyncParams)
ORMEL_DEFINE_PARAMS(ListInstalledPluginsParams)
ORMEL_DEFINE_PARAMS(ReadPluginParams)
ORMEL_DEFINE_PARAMS(InstallPluginParams)
ORMEL_DEFINE_PARAMS(UninstallPluginParams)
ORMEL_DEFINE_PARAMS(SavePluginShareParams)
ORMEL_DEFINE_PARAMS(AddMarketplaceParams)
ORMEL_DEFINE_PARAMS(UpgradeMarketplacesParams)
