#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/ConfigRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "OrmelSDK/Records/PluginRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"
#include "Support/TemporaryDirectory.h"
#include "ormel-simulator/Catalogue/CatalogueAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr const char* herbarium =
    R"({"pluginName":"herbarium","marketplacePath":"/ormel/marketplaces/garden/marketplace.json"})";
constexpr const char* tides = R"({"pluginName":"tides","remoteMarketplaceName":"harbour"})";

template <typename Response>
std::map<std::string, PluginSummary> pluginsOf(const Response& response) {
  std::map<std::string, PluginSummary> plugins;
  for (const PluginMarketplaceEntry& marketplace : response.marketplaces) {
    for (const PluginSummary& plugin : marketplace.plugins) plugins.emplace(plugin.id, plugin);
  }
  return plugins;
}

std::map<std::string, PluginSummary> listed(CatalogueAgent& agent, const char* params = "{}") {
  return pluginsOf(agent.read<PluginListResponse>("plugin/list", params));
}

std::vector<std::string> idsOf(const std::map<std::string, PluginSummary>& plugins) {
  std::vector<std::string> ids;
  for (const auto& [id, plugin] : plugins) ids.push_back(id);
  return ids;
}

std::vector<std::string> installedIDs(CatalogueAgent& agent, const char* params = "{}") {
  return idsOf(pluginsOf(agent.read<PluginInstalledResponse>("plugin/installed", params)));
}

/// All that plugins add to other listings, by name.
std::vector<std::string> contributions(CatalogueAgent& agent) {
  std::vector<std::string> names;
  const auto skills = agent.read<SkillsListResponse>("skills/list").data.at(0).skills;
  for (const SkillSummary& skill : skills) names.push_back(skill.name);
  const auto hooks = agent.read<HooksListResponse>("hooks/list").data.at(0).hooks;
  for (const HookMetadata& hook : hooks) names.push_back(hook.key + " of " + hook.pluginID.value_or(""));
  for (const auto& server : agent.read<McpServerStatusListResponse>("mcpServerStatus/list").data) {
    names.push_back(server.name + " of " + server.pluginID.value_or(""));
  }
  for (const auto& app : agent.read<AppsListResponse>("app/list").data) {
    for (const std::string& plugin : app.pluginDisplayNames) names.push_back(app.id + " of " + plugin);
  }
  return names;
}

const std::vector<std::string> herbariumContributions = {
    "herbarium:name-a-plant", "herbarium:press-a-leaf", "herbarium/label of herbarium@garden",
    "leaf-index of herbarium@garden", "seed-exchange of Herbarium"};

void expectContributions(CatalogueAgent& agent, bool present) {
  const std::vector<std::string> all = contributions(agent);
  for (const std::string& name : herbariumContributions) {
    EXPECT_EQ(std::count(all.begin(), all.end(), name), present ? 1 : 0) << name;
  }
}

TEST(CataloguePlugins, AreInstalledAndUninstalled) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  EXPECT_FALSE(listed(agent).at("herbarium@garden").installed);
  EXPECT_TRUE(listed(agent).at("compost@garden").installed);
  expectContributions(agent, false);

  const int request = agent.ask("plugin/install", CatalogueAgent::paramsFrom(herbarium));
  agent.await("skills/changed");
  agent.await("app/list/updated");
  const auto installed = decode<PluginInstallResponse>(anyMember(agent.awaitAnswer(request), "result"));
  EXPECT_EQ(installed.authPolicy, PluginAuthPolicy::onInstall);
  ASSERT_EQ(installed.appsNeedingAuth.size(), 1U);
  EXPECT_EQ(installed.appsNeedingAuth[0].id, "seed-exchange");
  EXPECT_TRUE(installed.appsNeedingAuth[0].needsAuth);

  CatalogueAgent other(state.path().string());
  const PluginSummary summary = listed(other).at("herbarium@garden");
  EXPECT_TRUE(summary.installed && summary.enabled);
  EXPECT_TRUE(summary.installedAt);
  EXPECT_EQ(summary.localVersion, summary.version);
  EXPECT_THAT(installedIDs(other), ElementsAre("compost@garden", "herbarium@garden"));
  EXPECT_TRUE(other.read<ConfigReadResponse>("config/read").config.plugins->at("herbarium@garden").enabled);
  expectContributions(other, true);

  other.get("plugin/uninstall", R"({"pluginId":"herbarium@garden","forceRemoteSync":true})");
  EXPECT_FALSE(listed(agent).at("herbarium@garden").installed);
  EXPECT_FALSE(listed(agent).at("herbarium@garden").installedAt);
  expectContributions(agent, false);
  agent.get("plugin/uninstall", R"({"pluginId":"compost@garden"})");
  EXPECT_THAT(installedIDs(agent), IsEmpty());
  EXPECT_EQ(agent.fault("plugin/uninstall", R"({"pluginId":"compost@garden"})"),
            "-32602 no plugin with the pluginId compost@garden is installed");
}

TEST(CataloguePlugins, ContributeNothingWhileTheyAreDisabled) {
  CatalogueAgent agent;
  agent.get("plugin/install", herbarium);
  agent.get("config/value/write",
            R"({"keyPath":"plugins.\"herbarium@garden\".enabled","value":false,"mergeStrategy":"replace"})");
  const PluginSummary summary = listed(agent).at("herbarium@garden");
  EXPECT_TRUE(summary.installed);
  EXPECT_FALSE(summary.enabled);
  expectContributions(agent, false);
}

TEST(CataloguePlugins, AreListedByMarketplaceAndKind) {
  CatalogueAgent agent;
  const auto all = agent.read<PluginListResponse>("plugin/list");
  EXPECT_THAT(all.featuredPluginIDs, ElementsAre("herbarium@garden", "tides@harbour"));
  EXPECT_THAT(all.marketplaceLoadErrors, IsEmpty());
  EXPECT_EQ(all.marketplaces.at(0).interface->displayName, "The Garden");
  EXPECT_TRUE(all.marketplaces.at(0).path);
  EXPECT_FALSE(all.marketplaces.at(1).path);
  EXPECT_EQ(listed(agent).at("salvage@harbour").availability, PluginAvailability::disabledByAdmin);
  EXPECT_THAT(idsOf(listed(agent, R"({"marketplaceKinds":["local"]})")),
              ElementsAre("compost@garden", "herbarium@garden"));
  EXPECT_THAT(idsOf(listed(agent, R"({"marketplaceKinds":["vertical","workspace-directory"]})")),
              ElementsAre("minutes@workspace", "salvage@harbour", "tides@harbour"));
  EXPECT_THAT(idsOf(listed(agent, R"({"marketplaceKinds":["shared-with-me"]})")), IsEmpty());
  EXPECT_THAT(installedIDs(agent, R"({"installSuggestionPluginNames":["tides","none"]})"),
              ElementsAre("compost@garden", "tides@harbour"));
}

TEST(CataloguePlugins, AreReadInDetail) {
  CatalogueAgent agent;
  const PluginDetail local = agent.read<PluginReadResponse>("plugin/read", herbarium).plugin;
  EXPECT_EQ(local.marketplaceName, "garden");
  EXPECT_EQ(local.skills.size(), 2U);
  EXPECT_EQ(local.hooks.at(0).eventName, HookEventName::postToolUse);
  EXPECT_EQ(local.apps.at(0).name, "Seed Exchange");
  EXPECT_THAT(local.mcpServers, ElementsAre("leaf-index"));
  EXPECT_EQ(local.summary, listed(agent).at("herbarium@garden"));
  const PluginDetail remote = agent.read<PluginReadResponse>("plugin/read", tides).plugin;
  EXPECT_TRUE(std::holds_alternative<RemotePluginSource>(remote.summary.source.value));
  EXPECT_FALSE(remote.marketplacePath);
}

TEST(CataloguePlugins, AreSharedAndTakenBack) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  const auto saved = agent.read<PluginShareSaveResponse>("plugin/share/save",
                                                         R"({"pluginPath":"/work/rake/","discoverability":"LISTED"})");
  const auto withID = [&saved](const std::string& rest) {
    return R"({"remotePluginId":")" + saved.remotePluginID + "\"" + rest + "}";
  };
  CatalogueAgent other(state.path().string());
  const auto shares = other.read<PluginShareListResponse>("plugin/share/list").data;
  ASSERT_EQ(shares.size(), 1U);
  EXPECT_EQ(shares[0].shareURL, saved.shareURL);
  EXPECT_EQ(shares[0].localPluginPath, "/work/rake/");
  EXPECT_EQ(shares[0].plugin.shareContext->discoverability, PluginShareDiscoverability::listed);
  EXPECT_EQ(listed(other, R"({"marketplaceKinds":["shared-with-me"]})").at("rake@shared").remotePluginID,
            saved.remotePluginID);

  const auto updated =
      other.read<PluginShareUpdateTargetsResponse>("plugin/share/updateTargets", withID(R"(,"discoverability":"PRIVATE",
                "shareTargets":[{"principalType":"group","principalId":"g","role":"editor"}])"));
  EXPECT_EQ(updated.discoverability, PluginShareDiscoverability::private_);
  ASSERT_EQ(updated.principals.size(), 2U);
  EXPECT_EQ(updated.principals[0].role, PluginSharePrincipalRole::owner);
  EXPECT_EQ(updated.principals[1].principalID, "g");
  EXPECT_EQ(updated.principals[1].role, PluginSharePrincipalRole::editor);
  EXPECT_EQ(agent.read<PluginShareListResponse>("plugin/share/list").data.at(0).plugin.shareContext->sharePrincipals,
            updated.principals);

  const auto checkout = agent.read<PluginShareCheckoutResponse>("plugin/share/checkout", withID(""));
  EXPECT_EQ(checkout.pluginID, "rake@shared");
  EXPECT_EQ(checkout.remoteVersion, "1.0.0");
  const auto again = agent.read<PluginShareSaveResponse>("plugin/share/save", withID(R"(,"pluginPath":"/work/rake")"));
  EXPECT_EQ(again.remotePluginID, saved.remotePluginID);
  EXPECT_EQ(agent.read<PluginShareCheckoutResponse>("plugin/share/checkout", withID("")).remoteVersion, "1.0.1");
  EXPECT_EQ(agent.fault("plugin/share/save", R"({"pluginPath":"/other/rake"})"),
            "-32600 another plugin is shared by the name rake: " + saved.remotePluginID);

  agent.get("plugin/install", R"({"pluginName":"rake","remoteMarketplaceName":"shared"})");
  EXPECT_THAT(installedIDs(agent), Contains("rake@shared"));
  agent.get("plugin/share/delete", withID(""));
  EXPECT_THAT(other.read<PluginShareListResponse>("plugin/share/list").data, IsEmpty());
  EXPECT_THAT(installedIDs(other), Not(Contains("rake@shared")));
  EXPECT_EQ(agent.read<ConfigReadResponse>("config/read").config.plugins->count("rake@shared"), 0U);
}

TEST(CataloguePlugins, ComeFromMarketplacesThatAreAdded) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  constexpr const char* shed = R"({"source":"https://code.example/shed.git"})";
  const auto added = agent.read<MarketplaceAddResponse>("marketplace/add", shed);
  EXPECT_EQ(added.marketplaceName, "shed");
  EXPECT_FALSE(added.alreadyAdded);
  CatalogueAgent other(state.path().string());
  EXPECT_TRUE(other.read<MarketplaceAddResponse>("marketplace/add", shed).alreadyAdded);
  EXPECT_EQ(other.fault("marketplace/add", R"({"source":"/elsewhere/shed"})"),
            "-32600 there is a marketplace shed from another source");
  const std::string path = other.read<PluginListResponse>("plugin/list").marketplaces.back().path.value_or("");
  other.get("plugin/install", R"({"pluginName":"shed-starter","marketplacePath":")" + path + R"("})");
  EXPECT_THAT(installedIDs(other), Contains("shed-starter@shed"));

  other.get("marketplace/add", R"({"source":"git@code.example:broken-fence.git"})");
  const auto list = agent.read<PluginListResponse>("plugin/list");
  ASSERT_EQ(list.marketplaceLoadErrors.size(), 1U);
  EXPECT_EQ(list.marketplaceLoadErrors[0].message,
            "the marketplace broken-fence cannot be read from git@code.example:broken-fence.git");
  const auto all = agent.read<MarketplaceUpgradeResponse>("marketplace/upgrade");
  EXPECT_THAT(all.selectedMarketplaces, ElementsAre("broken-fence", "shed"));
  EXPECT_THAT(all.upgradedRoots, ElementsAre(added.installedRoot));
  ASSERT_EQ(all.errors.size(), 1U);
  EXPECT_EQ(all.errors[0].marketplaceName, "broken-fence");
  const auto one = agent.read<MarketplaceUpgradeResponse>("marketplace/upgrade", R"({"marketplaceName":"shed"})");
  EXPECT_THAT(one.selectedMarketplaces, ElementsAre("shed"));
  EXPECT_THAT(one.errors, IsEmpty());

  EXPECT_EQ(agent.read<MarketplaceRemoveResponse>("marketplace/remove", R"({"marketplaceName":"shed"})").installedRoot,
            added.installedRoot);
  EXPECT_THAT(installedIDs(other), Not(Contains("shed-starter@shed")));
  EXPECT_THAT(idsOf(listed(other)), Not(Contains("shed-starter@shed")));
  other.get("marketplace/add", shed);
  EXPECT_FALSE(listed(other).at("shed-starter@shed").installed);
}

}  // namespace
}  // namespace ormel::simulator
