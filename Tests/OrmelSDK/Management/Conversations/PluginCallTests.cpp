#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Management/PluginParams.h"
#include "OrmelSDK/Records/PluginRecords.h"
#include "Support/CallRows.h"

namespace {

using namespace ormel;
using namespace ormel::testing;

/// A plugin with the least that it needs, and the same with what stands for the rest.
#define ORMEL_SMALL_PLUGIN                                                                 \
  R"({"id":"p1","name":"P","source":{"type":"remote"},"installed":false,"enabled":false,)" \
  R"("installPolicy":"AVAILABLE","authPolicy":"ON_USE")"
#define ORMEL_SMALL_PLUGIN_READ ORMEL_SMALL_PLUGIN R"(,"availability":"AVAILABLE","keywords":[]})"

#define ORMEL_WHOLE_PLUGIN                                                                                       \
  R"({"id":"p2","remotePluginId":"r2","version":"1.2","localVersion":"1.1","name":"Q","shareContext":)"          \
  R"({"remotePluginId":"r2","remoteVersion":"1.2","discoverability":"PRIVATE","shareUrl":"https://s",)"          \
  R"("creatorAccountUserId":"u","creatorName":"N","sharePrincipals":[{"principalType":"workspace",)"             \
  R"("principalId":"w","role":"owner","name":"W"}]},"source":{"type":"git","url":"https://g","refName":"main",)" \
  R"("sha":"abc","path":"sub"},"installed":true,"installedAt":1700000000,"enabled":true,)"                       \
  R"("installPolicy":"INSTALLED_BY_DEFAULT","installPolicySource":"WORKSPACE_SETTING",)"                         \
  R"("mustShowInstallationInterstitial":false,"authPolicy":"ON_INSTALL","availability":"DISABLED_BY_ADMIN",)"    \
  R"("disabledReason":"plan_not_eligible","eligiblePlanTypes":["pro"],"interface":{"displayName":"Q",)"          \
  R"("shortDescription":"s","longDescription":"l","developerName":"d","category":"c","capabilities":["x"],)"     \
  R"("websiteUrl":"https://w","privacyPolicyUrl":"https://p","termsOfServiceUrl":"https://t",)"                  \
  R"("defaultPrompt":["try"],"brandColor":"#336","composerIcon":"i","composerIconUrl":"https://i","logo":"o",)"  \
  R"("logoUrl":"https://o","screenshots":["a"],"screenshotUrls":["https://a"]},"keywords":["k"]})"

constexpr const char* noPlugins = R"({"marketplaces":[]})";
constexpr const char* noPluginsRead = R"({"marketplaces":[],"marketplaceLoadErrors":[],"featuredPluginIds":[]})";
constexpr const char* allPlugins =
    R"({"marketplaces":[{"name":"m","path":"/m","interface":{"displayName":"M"},"plugins":[)" ORMEL_WHOLE_PLUGIN
    R"(]},{"name":"n","plugins":[]}],"marketplaceLoadErrors":[{"marketplacePath":"/x","message":"bad"}],)"
    R"("remoteSyncError":"offline","featuredPluginIds":["p2"]})";
constexpr const char* noInstalled = R"({"marketplaces":[],"marketplaceLoadErrors":[]})";
constexpr const char* smallDetail = R"({"plugin":{"marketplaceName":"m","summary":)" ORMEL_SMALL_PLUGIN "}}}";
constexpr const char* smallDetailRead = R"({"plugin":{"marketplaceName":"m","summary":)" ORMEL_SMALL_PLUGIN_READ
                                        R"(,"skills":[],"hooks":[],"apps":[],"mcpServers":[]}})";
constexpr const char* wholeDetail =
    R"({"plugin":{"marketplaceName":"m","marketplacePath":"/m","summary":)" ORMEL_WHOLE_PLUGIN
    R"(,"description":"d","skills":[{"name":"s","description":"d","shortDescription":"sd","interface":{)"
    R"("displayName":"S","shortDescription":"sd","iconSmall":"is","iconLarge":"il","brandColor":"#123",)"
    R"("defaultPrompt":"p"},"path":"/s","enabled":false}],"hooks":[{"key":"h","eventName":"preToolUse"}],)"
    R"("apps":[{"id":"a","name":"A","description":"d","installUrl":"https://a","needsAuth":false}],)"
    R"("mcpServers":["mcp"]}})";
constexpr const char* anInstallation = R"({"authPolicy":"ON_USE","appsNeedingAuth":[]})";
constexpr const char* aSave = R"({"remotePluginId":"r","shareUrl":"https://s"})";

const ReplyRecords pluginRecords = {
    {"plugin/list", "PluginListResponse"},
    {"plugin/installed", "PluginInstalledResponse"},
    {"plugin/read", "PluginReadResponse"},
    {"plugin/install", "PluginInstallResponse"},
    {"plugin/uninstall", "PluginUninstallResponse"},
    {"plugin/skill/read", "PluginSkillReadResponse"},
    {"plugin/share/save", "PluginShareSaveResponse"},
    {"plugin/share/updateTargets", "PluginShareUpdateTargetsResponse"},
    {"plugin/share/list", "PluginShareListResponse"},
    {"plugin/share/checkout", "PluginShareCheckoutResponse"},
    {"plugin/share/delete", "PluginShareDeleteResponse"},
    {"marketplace/add", "MarketplaceAddResponse"},
    {"marketplace/remove", "MarketplaceRemoveResponse"},
    {"marketplace/upgrade", "MarketplaceUpgradeResponse"},
};

const CallRow pluginRows[] = {
    onBoth(R"({"id":2,"method":"plugin/list","params":{}})", noPlugins, noPluginsRead,
           [](const auto& object) { return object.listPlugins(); }),
    onBoth(R"({"id":2,"method":"plugin/list","params":{"cwds":["/a","/b"],"forceRefetch":true,"marketplaceKinds":[)"
           R"("local","vertical","workspace-directory","shared-with-me"]}})",
           allPlugins,
           [](const auto& object) {
             ListPluginsParams params;
             params.cwds = {"/a", "/b"};
             params.forceRefetch = true;
             params.marketplaceKinds = {PluginListMarketplaceKind::local, PluginListMarketplaceKind::vertical,
                                        PluginListMarketplaceKind::workspaceDirectory,
                                        PluginListMarketplaceKind::sharedWithMe};
             return object.listPlugins(params);
           }),
    onBoth(R"({"id":2,"method":"plugin/list","params":{"cwds":[],"marketplaceKinds":[]}})", noPlugins, noPluginsRead,
           [](const auto& object) {
             ListPluginsParams params;
             params.cwds.emplace();
             params.forceRefetch = false;
             params.marketplaceKinds.emplace();
             return object.listPlugins(params);
           }),
    // The older form.
    onBoth(R"({"id":2,"method":"plugin/list","params":{}})", noPlugins, noPluginsRead,
           [](const auto& object) { return object.listPlugins(ListPluginsWithRemoteSyncParams()); }),
    onBoth(R"({"id":2,"method":"plugin/list","params":{"cwds":["/a"],"forceRefetch":true,)"
           R"("marketplaceKinds":["vertical"]}})",
           R"({"marketplaces":[{"name":"m","path":null,"interface":null,"plugins":[)" ORMEL_SMALL_PLUGIN
           R"(}]}],"marketplaceLoadErrors":null,"remoteSyncError":null,"featuredPluginIds":null})",
           R"({"marketplaces":[{"name":"m","plugins":[)" ORMEL_SMALL_PLUGIN_READ
           R"(]}],"marketplaceLoadErrors":[],"featuredPluginIds":[]})",
           [](const auto& object) {
             ListPluginsWithRemoteSyncParams params;
             params.cwds = {"/a"};
             params.forceRemoteSync = true;
             params.marketplaceKinds = {PluginListMarketplaceKind::vertical};
             return object.listPlugins(params);
           }),
    onBoth(R"({"id":2,"method":"plugin/installed","params":{}})", noInstalled,
           [](const auto& object) { return object.listInstalledPlugins(); }),
    onBoth(R"({"id":2,"method":"plugin/installed","params":{"cwds":["/a"],"installSuggestionPluginNames":["p","q"]}})",
           R"({"marketplaces":[{"name":"m","plugins":[)" ORMEL_WHOLE_PLUGIN
           R"(]}],"marketplaceLoadErrors":[{"marketplacePath":"/x","message":"bad"}]})",
           [](const auto& object) {
             ListInstalledPluginsParams params;
             params.cwds = {"/a"};
             params.installSuggestionPluginNames = {"p", "q"};
             return object.listInstalledPlugins(params);
           }),
    onBoth(R"({"id":2,"method":"plugin/installed","params":{"cwds":[],"installSuggestionPluginNames":[]}})",
           noInstalled,
           [](const auto& object) {
             ListInstalledPluginsParams params;
             params.cwds.emplace();
             params.installSuggestionPluginNames.emplace();
             return object.listInstalledPlugins(params);
           }),

    onBoth(R"({"id":2,"method":"plugin/read","params":{"pluginName":"p"}})", smallDetail, smallDetailRead,
           [](const auto& object) { return object.readPlugin("p"); }),
    onBoth(R"({"id":2,"method":"plugin/read","params":{"pluginName":"p","marketplacePath":"/m",)"
           R"("remoteMarketplaceName":"r"}})",
           wholeDetail,
           [](const auto& object) {
             ReadPluginParams params;
             params.marketplacePath = "/m";
             params.remoteMarketplaceName = "r";
             return object.readPlugin("p", params);
           }),
    onBoth(R"({"id":2,"method":"plugin/read","params":{"pluginName":"","marketplacePath":"",)"
           R"("remoteMarketplaceName":""}})",
           smallDetail, smallDetailRead,
           [](const auto& object) {
             ReadPluginParams params;
             params.marketplacePath = "";
             params.remoteMarketplaceName = "";
             return object.readPlugin("", params);
           }),
    onOrmel(R"({"id":2,"method":"plugin/read","params":{"pluginName":"p","marketplacePath":"/m"}})", smallDetail,
            smallDetailRead,
            [](const Ormel& ormel) { return ormel.readPlugin(PluginRequestTarget::local("/m", "p")); }),
    onOrmel(R"({"id":2,"method":"plugin/read","params":{"pluginName":"p","remoteMarketplaceName":"r"}})", smallDetail,
            smallDetailRead,
            [](const Ormel& ormel) { return ormel.readPlugin(PluginRequestTarget::remote("r", "p")); }),
    onBoth(R"({"id":2,"method":"plugin/install","params":{"pluginName":"p"}})", anInstallation,
           [](const auto& object) { return object.installPlugin("p"); }),
    onBoth(R"({"id":2,"method":"plugin/install","params":{"pluginName":"p","marketplacePath":"/m",)"
           R"("remoteMarketplaceName":"r","forceRemoteSync":true}})",
           R"({"authPolicy":"ON_INSTALL","appsNeedingAuth":[{"id":"a","name":"A","description":"d",)"
           R"("installUrl":"https://a"},{"id":"b","name":"B"}]})",
           R"({"authPolicy":"ON_INSTALL","appsNeedingAuth":[{"id":"a","name":"A","description":"d",)"
           R"("installUrl":"https://a","needsAuth":true},{"id":"b","name":"B","needsAuth":false}]})",
           [](const auto& object) {
             InstallPluginParams params;
             params.marketplacePath = "/m";
             params.remoteMarketplaceName = "r";
             params.forceRemoteSync = true;
             return object.installPlugin("p", params);
           }),
    onOrmel(R"({"id":2,"method":"plugin/install","params":{"pluginName":"p","marketplacePath":"/m"}})", anInstallation,
            [](const Ormel& ormel) { return ormel.installPlugin(PluginRequestTarget::local("/m", "p")); }),
    onOrmel(R"({"id":2,"method":"plugin/install","params":{"pluginName":"p","remoteMarketplaceName":"r",)"
            R"("forceRemoteSync":true}})",
            anInstallation,
            [](const Ormel& ormel) {
              InstallPluginTargetParams params;
              params.forceRemoteSync = true;
              return ormel.installPlugin(PluginRequestTarget::remote("r", "p"), params);
            }),
    onBoth(R"({"id":2,"method":"plugin/uninstall","params":{"pluginId":"p1"}})", R"({"more":1})", "{}",
           [](const auto& object) { return object.uninstallPlugin("p1"); }),
    onBoth(R"({"id":2,"method":"plugin/uninstall","params":{"pluginId":"p1","forceRemoteSync":true}})", "{}",
           [](const auto& object) {
             UninstallPluginParams params;
             params.forceRemoteSync = true;
             return object.uninstallPlugin("p1", params);
           }),

    onOrmel(R"({"id":2,"method":"plugin/skill/read","params":{"remoteMarketplaceName":"r","remotePluginId":"rp",)"
            R"("skillName":"s"}})",
            "{}", [](const Ormel& ormel) { return ormel.readPluginSkill("r", "rp", "s"); }),
    onOrmel(R"({"id":2,"method":"plugin/skill/read","params":{"remoteMarketplaceName":"","remotePluginId":"",)"
            R"("skillName":""}})",
            R"({"contents":"text"})", [](const Ormel& ormel) { return ormel.readPluginSkill("", "", ""); }),
    onOrmel(R"({"id":2,"method":"plugin/share/save","params":{"pluginPath":"/p"}})", aSave,
            [](const Ormel& ormel) { return ormel.savePluginShare("/p"); }),
    onOrmel(R"({"id":2,"method":"plugin/share/save","params":{"pluginPath":"/p","remotePluginId":"r",)"
            R"("discoverability":"LISTED","shareTargets":[{"principalType":"user","principalId":"u","role":"reader"},)"
            R"({"principalType":"group","principalId":"g","role":"editor"},)"
            R"({"principalType":"workspace","principalId":"","role":"reader"}]}})",
            aSave,
            [](const Ormel& ormel) {
              SavePluginShareParams params;
              params.remotePluginID = "r";
              params.discoverability = PluginShareDiscoverability::listed;
              params.shareTargets = {
                  PluginShareTarget{PluginSharePrincipalType::user, "u", PluginShareTargetRole::reader},
                  PluginShareTarget{PluginSharePrincipalType::group, "g", PluginShareTargetRole::editor},
                  PluginShareTarget{PluginSharePrincipalType::workspace, "", PluginShareTargetRole::reader}};
              return ormel.savePluginShare("/p", params);
            }),
    onOrmel(R"({"id":2,"method":"plugin/share/save","params":{"pluginPath":"","remotePluginId":"",)"
            R"("discoverability":"UNLISTED","shareTargets":[]}})",
            aSave,
            [](const Ormel& ormel) {
              SavePluginShareParams params;
              params.remotePluginID = "";
              params.discoverability = PluginShareDiscoverability::unlisted;
              params.shareTargets.emplace();
              return ormel.savePluginShare("", params);
            }),
    onOrmel(R"({"id":2,"method":"plugin/share/save","params":{"pluginPath":"/p","discoverability":"PRIVATE"}})", aSave,
            [](const Ormel& ormel) {
              SavePluginShareParams params;
              params.discoverability = PluginShareDiscoverability::private_;
              return ormel.savePluginShare("/p", params);
            }),
    onOrmel(R"({"id":2,"method":"plugin/share/updateTargets","params":{"remotePluginId":"r",)"
            R"("discoverability":"UNLISTED","shareTargets":[]}})",
            R"({"principals":[],"discoverability":"LISTED"})",
            [](const Ormel& ormel) {
              return ormel.updatePluginShareTargets("r", PluginShareUpdateDiscoverability::unlisted, {});
            }),
    onOrmel(R"({"id":2,"method":"plugin/share/updateTargets","params":{"remotePluginId":"r",)"
            R"("discoverability":"PRIVATE","shareTargets":[{"principalType":"group","principalId":"g",)"
            R"("role":"editor"}]}})",
            R"({"principals":[{"principalType":"group","principalId":"g","role":"editor","name":"G"},)"
            R"({"principalType":"user","principalId":"u","role":"owner","name":"U"},)"
            R"({"principalType":"workspace","principalId":"w","role":"reader","name":"W"}],)"
            R"("discoverability":"PRIVATE"})",
            [](const Ormel& ormel) {
              return ormel.updatePluginShareTargets(
                  "r", PluginShareUpdateDiscoverability::private_,
                  {PluginShareTarget{PluginSharePrincipalType::group, "g", PluginShareTargetRole::editor}});
            }),
    onOrmel(R"({"id":2,"method":"plugin/share/list","params":{}})", R"({"data":[]})",
            [](const Ormel& ormel) { return ormel.listPluginShares(); }),
    onOrmel(R"({"id":2,"method":"plugin/share/list","params":{}})",
            R"({"data":[{"plugin":)" ORMEL_WHOLE_PLUGIN R"(,"shareUrl":"https://s","localPluginPath":"/p"},)"
            R"({"plugin":)" ORMEL_SMALL_PLUGIN "}}]}",
            R"({"data":[{"plugin":)" ORMEL_WHOLE_PLUGIN R"(,"shareUrl":"https://s","localPluginPath":"/p"},)"
            R"({"plugin":)" ORMEL_SMALL_PLUGIN_READ "}]}",
            [](const Ormel& ormel) { return ormel.listPluginShares(); }),
    onOrmel(R"({"id":2,"method":"plugin/share/checkout","params":{"remotePluginId":"r"}})",
            R"({"remotePluginId":"r","pluginId":"p","pluginName":"P","pluginPath":"/p","marketplaceName":"m",)"
            R"("marketplacePath":"/m"})",
            [](const Ormel& ormel) { return ormel.checkoutPluginShare("r"); }),
    onOrmel(R"({"id":2,"method":"plugin/share/checkout","params":{"remotePluginId":""}})",
            R"({"remotePluginId":"r","pluginId":"p","pluginName":"P","pluginPath":"/p","marketplaceName":"m",)"
            R"("marketplacePath":"/m","remoteVersion":"3"})",
            [](const Ormel& ormel) { return ormel.checkoutPluginShare(""); }),
    onOrmel(R"({"id":2,"method":"plugin/share/delete","params":{"remotePluginId":"r"}})", "{}",
            [](const Ormel& ormel) { return ormel.deletePluginShare("r"); }),
    onOrmel(R"({"id":2,"method":"marketplace/add","params":{"source":"https://m"}})",
            R"({"marketplaceName":"m","installedRoot":"/m","alreadyAdded":false})",
            [](const Ormel& ormel) { return ormel.addMarketplace("https://m"); }),
    onOrmel(R"({"id":2,"method":"marketplace/add","params":{"source":"https://m","refName":"main",)"
            R"("sparsePaths":["a","b"]}})",
            R"({"marketplaceName":"m","installedRoot":"/m","alreadyAdded":true})",
            [](const Ormel& ormel) {
              AddMarketplaceParams params;
              params.refName = "main";
              params.sparsePaths = {"a", "b"};
              return ormel.addMarketplace("https://m", params);
            }),
    onOrmel(R"({"id":2,"method":"marketplace/add","params":{"source":"","refName":"","sparsePaths":[]}})",
            R"({"marketplaceName":"","installedRoot":"","alreadyAdded":true})",
            [](const Ormel& ormel) {
              AddMarketplaceParams params;
              params.refName = "";
              params.sparsePaths.emplace();
              return ormel.addMarketplace("", params);
            }),
    onOrmel(R"({"id":2,"method":"marketplace/remove","params":{"marketplaceName":"m"}})", R"({"marketplaceName":"m"})",
            [](const Ormel& ormel) { return ormel.removeMarketplace("m"); }),
    onOrmel(R"({"id":2,"method":"marketplace/remove","params":{"marketplaceName":"m"}})",
            R"({"marketplaceName":"m","installedRoot":"/m"})",
            [](const Ormel& ormel) { return ormel.removeMarketplace("m"); }),
    onOrmel(R"({"id":2,"method":"marketplace/upgrade","params":{}})",
            R"({"selectedMarketplaces":[],"upgradedRoots":[],"errors":[]})",
            [](const Ormel& ormel) { return ormel.upgradeMarketplaces(); }),
    onOrmel(R"({"id":2,"method":"marketplace/upgrade","params":{"marketplaceName":"m"}})",
            R"({"selectedMarketplaces":["m","n"],"upgradedRoots":["/m"],"errors":[{"marketplaceName":"n",)"
            R"("message":"offline"}]})",
            [](const Ormel& ormel) {
              UpgradeMarketplacesParams params;
              params.marketplaceName = "m";
              return ormel.upgradeMarketplaces(params);
            }),
};

#undef ORMEL_SMALL_PLUGIN
#undef ORMEL_SMALL_PLUGIN_READ
#undef ORMEL_WHOLE_PLUGIN

TEST(PluginCalls, GoOutExactly) { expectCalls(pluginRows); }

TEST(PluginCalls, FailByTheirRecordAndByTheServersError) { expectFailures(pluginRows, pluginRecords); }

}  // namespace
