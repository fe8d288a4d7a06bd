#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Records/HookWords.h"
#include "OrmelSDK/Records/PluginShareTarget.h"
#include "OrmelSDK/Records/SkillRecords.h"

// Plugins, the marketplaces that list them, and their sharing. Every type here has a JSON form, except that the single
// sources of a plugin have it only as a `PluginSource`.
namespace ormel {

/// Whether a plugin may be installed.
enum class PluginInstallPolicy { notAvailable, available, installedByDefault };
std::ostream& operator<<(std::ostream& stream, const PluginInstallPolicy& value);

/// When the user signs in to what a plugin needs.
enum class PluginAuthPolicy { onInstall, onUse };
std::ostream& operator<<(std::ostream& stream, const PluginAuthPolicy& value);

/// Whether a plugin can be had at all. A word that is not known is `unknown`; words are compared exactly.
enum class PluginAvailability { available, disabledByAdmin, unknown };
std::ostream& operator<<(std::ostream& stream, const PluginAvailability& value);

/// A kind of marketplace, to narrow a listing by.
enum class PluginListMarketplaceKind { local, vertical, workspaceDirectory, sharedWithMe };
std::ostream& operator<<(std::ostream& stream, const PluginListMarketplaceKind& value);

/// Says who can find a shared plugin.
enum class PluginShareDiscoverability { listed, unlisted, private_ };
std::ostream& operator<<(std::ostream& stream, const PluginShareDiscoverability& value);

/// The discoverability that a plugin which is shared already can be changed to.
enum class PluginShareUpdateDiscoverability { unlisted, private_ };
std::ostream& operator<<(std::ostream& stream, const PluginShareUpdateDiscoverability& value);

/// The role of a principal for a shared plugin.
enum class PluginSharePrincipalRole { reader, editor, owner };
std::ostream& operator<<(std::ostream& stream, const PluginSharePrincipalRole& value);

/// Where the install policy of a plugin comes from.
struct PluginInstallPolicySource : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const PluginInstallPolicySource& workspaceSetting;
  static const PluginInstallPolicySource& implicitCanonicalApp;
};
std::ostream& operator<<(std::ostream& stream, const PluginInstallPolicySource& value);

inline const PluginInstallPolicySource& PluginInstallPolicySource::workspaceSetting =
    detail::neverDestroyed<PluginInstallPolicySource>("WORKSPACE_SETTING");
inline const PluginInstallPolicySource& PluginInstallPolicySource::implicitCanonicalApp =
    detail::neverDestroyed<PluginInstallPolicySource>("IMPLICIT_CANONICAL_APP");

/// Why a plugin cannot be used.
struct PluginDisabledReason : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const PluginDisabledReason& disabledByAdmin;
  static const PluginDisabledReason& planNotEligible;
  static const PluginDisabledReason& requiredAppUnavailable;
};
std::ostream& operator<<(std::ostream& stream, const PluginDisabledReason& value);

inline const PluginDisabledReason& PluginDisabledReason::disabledByAdmin =
    detail::neverDestroyed<PluginDisabledReason>("disabled_by_admin");
inline const PluginDisabledReason& PluginDisabledReason::planNotEligible =
    detail::neverDestroyed<PluginDisabledReason>("plan_not_eligible");
inline const PluginDisabledReason& PluginDisabledReason::requiredAppUnavailable =
    detail::neverDestroyed<PluginDisabledReason>("required_app_unavailable");

/// A plugin in a folder of this machine.
struct LocalPluginSource {
  std::string path;
  friend bool operator==(const LocalPluginSource&, const LocalPluginSource&);
  friend std::ostream& operator<<(std::ostream& stream, const LocalPluginSource& value);
};

/// A plugin in a git repository.
struct GitPluginSource {
  std::string url;
  /// A branch or a tag.
  std::optional<std::string> refName;
  std::optional<std::string> sha;
  /// The plugin's folder within the repository.
  std::optional<std::string> path;
  friend bool operator==(const GitPluginSource&, const GitPluginSource&);
  friend std::ostream& operator<<(std::ostream& stream, const GitPluginSource& value);
};

/// A plugin that is kept elsewhere; the server knows where.
struct RemotePluginSource {
  friend bool operator==(const RemotePluginSource&, const RemotePluginSource&);
  friend std::ostream& operator<<(std::ostream& stream, const RemotePluginSource& value);
};

/// A source of a type that this library does not know.
struct UnknownPluginSource {
  /// "unknown" if the object has no `type`, or one that is no text.
  std::string type;
  /// The whole object as it was read; it is written back unchanged.
  JSONValue payload;
  friend bool operator==(const UnknownPluginSource&, const UnknownPluginSource&);
  friend std::ostream& operator<<(std::ostream& stream, const UnknownPluginSource& value);
};

/// Where a plugin comes from. Use `visit` to tell the cases apart.
struct PluginSource {
  std::variant<LocalPluginSource, GitPluginSource, RemotePluginSource, UnknownPluginSource> value;

  // Copying and moving a variant is much code; it is compiled once, not in every file that does it.
  PluginSource();
  PluginSource(const PluginSource& other);
  PluginSource(PluginSource&& other) noexcept;
  PluginSource& operator=(const PluginSource& other);
  PluginSource& operator=(PluginSource&& other) noexcept;
  ~PluginSource();

  PluginSource(LocalPluginSource source);
  PluginSource(GitPluginSource source);
  PluginSource(RemotePluginSource source);
  PluginSource(UnknownPluginSource source);

  static PluginSource local(std::string path);
  static PluginSource git(std::string url, std::optional<std::string> refName = std::nullopt,
                          std::optional<std::string> sha = std::nullopt,
                          std::optional<std::string> path = std::nullopt);
  static PluginSource remote();
  static PluginSource unknown(std::string type, JSONValue payload);

  friend bool operator==(const PluginSource&, const PluginSource&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginSource& value);
};

/// An app that a plugin uses.
struct AppSummary {
  std::string id;
  std::string name;
  std::optional<std::string> description;
  /// The page on which the user connects the app.
  std::optional<std::string> installURL;
  /// Whether the user has to sign in first. If the server does not say, it is so exactly when there is an `installURL`.
  bool needsAuth = false;
  friend bool operator==(const AppSummary&, const AppSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const AppSummary& value);
};

/// How a plugin presents itself.
struct PluginInterface {
  std::optional<std::string> displayName;
  std::optional<std::string> shortDescription;
  std::optional<std::string> longDescription;
  std::optional<std::string> developerName;
  std::optional<std::string> category;
  /// The capabilities of the plugin, in its own words.
  std::vector<std::string> capabilities;
  std::optional<std::string> websiteURL;
  std::optional<std::string> privacyPolicyURL;
  std::optional<std::string> termsOfServiceURL;
  /// Prompts that the user might send to use the plugin.
  std::optional<std::vector<std::string>> defaultPrompt;
  /// As the plugin writes it, such as "#3366FF".
  std::optional<std::string> brandColor;
  std::optional<std::string> composerIcon;
  std::optional<std::string> composerIconURL;
  std::optional<std::string> logo;
  std::optional<std::string> logoURL;
  std::vector<std::string> screenshots;
  std::vector<std::string> screenshotURLs;
  friend bool operator==(const PluginInterface&, const PluginInterface&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginInterface& value);
};

/// A principal that a plugin is shared with, and its role.
struct PluginSharePrincipal {
  PluginSharePrincipalType principalType = PluginSharePrincipalType::user;
  std::string principalID;
  PluginSharePrincipalRole role = PluginSharePrincipalRole::reader;
  std::string name;
  friend bool operator==(const PluginSharePrincipal&, const PluginSharePrincipal&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginSharePrincipal& value);
};

/// How a plugin is shared.
struct PluginShareContext {
  std::string remotePluginID;
  std::optional<std::string> remoteVersion;
  std::optional<PluginShareDiscoverability> discoverability;
  std::optional<std::string> shareURL;
  std::optional<std::string> creatorAccountUserID;
  std::optional<std::string> creatorName;
  /// Absent when the server does not say.
  std::optional<std::vector<PluginSharePrincipal>> sharePrincipals;
  friend bool operator==(const PluginShareContext&, const PluginShareContext&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginShareContext& value);
};

/// A plugin as a listing shows it.
struct PluginSummary {
  std::string id;
  /// The id of the plugin where it is shared from.
  std::optional<std::string> remotePluginID;
  std::optional<std::string> version;
  /// The version on this machine.
  std::optional<std::string> localVersion;
  std::string name;
  std::optional<PluginShareContext> shareContext;
  PluginSource source;
  bool installed = false;
  /// When it was installed, in the unit that the server chose.
  std::optional<std::int64_t> installedAt;
  bool enabled = false;
  PluginInstallPolicy installPolicy = PluginInstallPolicy::notAvailable;
  std::optional<PluginInstallPolicySource> installPolicySource;
  std::optional<bool> mustShowInstallationInterstitial;
  PluginAuthPolicy authPolicy = PluginAuthPolicy::onInstall;
  /// Available if the server does not say.
  PluginAvailability availability = PluginAvailability::available;
  std::optional<PluginDisabledReason> disabledReason;
  /// The plans that the plugin is open to; absent when the server does not say.
  std::optional<std::vector<std::string>> eligiblePlanTypes;
  std::optional<PluginInterface> interface;
  std::vector<std::string> keywords;
  friend bool operator==(const PluginSummary&, const PluginSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginSummary& value);
};

/// A marketplace that could not be read, and why.
struct MarketplaceLoadErrorInfo {
  std::string marketplacePath;
  std::string message;
  friend bool operator==(const MarketplaceLoadErrorInfo&, const MarketplaceLoadErrorInfo&);
  friend std::ostream& operator<<(std::ostream& stream, const MarketplaceLoadErrorInfo& value);
};

/// How a marketplace presents itself.
struct MarketplaceInterface {
  std::optional<std::string> displayName;
  friend bool operator==(const MarketplaceInterface&, const MarketplaceInterface&);
  friend std::ostream& operator<<(std::ostream& stream, const MarketplaceInterface& value);
};

/// A marketplace and its plugins.
struct PluginMarketplaceEntry {
  std::string name;
  std::optional<std::string> path;
  std::optional<MarketplaceInterface> interface;
  std::vector<PluginSummary> plugins;
  friend bool operator==(const PluginMarketplaceEntry&, const PluginMarketplaceEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginMarketplaceEntry& value);
};

/// The plugins that there are, by marketplace.
struct PluginListResponse {
  std::vector<PluginMarketplaceEntry> marketplaces;
  std::vector<MarketplaceLoadErrorInfo> marketplaceLoadErrors;
  /// Why the remote plugins could not be brought up to date.
  std::optional<std::string> remoteSyncError;
  std::vector<std::string> featuredPluginIDs;
  friend bool operator==(const PluginListResponse&, const PluginListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginListResponse& value);
};

/// The plugins that are installed, by marketplace.
struct PluginInstalledResponse {
  std::vector<PluginMarketplaceEntry> marketplaces;
  std::vector<MarketplaceLoadErrorInfo> marketplaceLoadErrors;
  friend bool operator==(const PluginInstalledResponse&, const PluginInstalledResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginInstalledResponse& value);
};

/// A hook that a plugin brings.
struct PluginHookSummary {
  std::string key;
  HookEventName eventName;
  friend bool operator==(const PluginHookSummary&, const PluginHookSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginHookSummary& value);
};

/// A plugin with all that it brings.
struct PluginDetail {
  std::string marketplaceName;
  std::optional<std::string> marketplacePath;
  PluginSummary summary;
  std::optional<std::string> description;
  std::vector<SkillSummary> skills;
  std::vector<PluginHookSummary> hooks;
  std::vector<AppSummary> apps;
  /// The names of its MCP servers.
  std::vector<std::string> mcpServers;
  friend bool operator==(const PluginDetail&, const PluginDetail&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginDetail& value);
};

/// One plugin.
struct PluginReadResponse {
  PluginDetail plugin;
  friend bool operator==(const PluginReadResponse&, const PluginReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginReadResponse& value);
};

/// The text of a skill.
struct PluginSkillReadResponse {
  std::optional<std::string> contents;
  friend bool operator==(const PluginSkillReadResponse&, const PluginSkillReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginSkillReadResponse& value);
};

/// The steps that are left to do after an installation.
struct PluginInstallResponse {
  PluginAuthPolicy authPolicy = PluginAuthPolicy::onInstall;
  std::vector<AppSummary> appsNeedingAuth;
  friend bool operator==(const PluginInstallResponse&, const PluginInstallResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginInstallResponse& value);
};

/// The acknowledgement of a removal. Read from any object.
struct PluginUninstallResponse {
  friend bool operator==(const PluginUninstallResponse&, const PluginUninstallResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginUninstallResponse& value);
};

/// A plugin that the user shares.
struct PluginShareListItem {
  PluginSummary plugin;
  std::optional<std::string> shareURL;
  /// Where it lies on this machine, if it does.
  std::optional<std::string> localPluginPath;
  friend bool operator==(const PluginShareListItem&, const PluginShareListItem&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginShareListItem& value);
};

/// The plugins that the user shares.
struct PluginShareListResponse {
  std::vector<PluginShareListItem> data;
  friend bool operator==(const PluginShareListResponse&, const PluginShareListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginShareListResponse& value);
};

/// A plugin that is shared now.
struct PluginShareSaveResponse {
  std::string remotePluginID;
  std::string shareURL;
  friend bool operator==(const PluginShareSaveResponse&, const PluginShareSaveResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginShareSaveResponse& value);
};

/// The principals that a plugin is shared with from now on.
struct PluginShareUpdateTargetsResponse {
  std::vector<PluginSharePrincipal> principals;
  PluginShareDiscoverability discoverability = PluginShareDiscoverability::listed;
  friend bool operator==(const PluginShareUpdateTargetsResponse&, const PluginShareUpdateTargetsResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginShareUpdateTargetsResponse& value);
};

/// A shared plugin that was copied to this machine.
struct PluginShareCheckoutResponse {
  std::string remotePluginID;
  std::string pluginID;
  std::string pluginName;
  /// The folder of the copy.
  std::string pluginPath;
  std::string marketplaceName;
  /// The marketplace on this machine that lists the copy.
  std::string marketplacePath;
  std::optional<std::string> remoteVersion;
  friend bool operator==(const PluginShareCheckoutResponse&, const PluginShareCheckoutResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginShareCheckoutResponse& value);
};

/// The acknowledgement that a plugin is no longer shared. Read from any object.
struct PluginShareDeleteResponse {
  friend bool operator==(const PluginShareDeleteResponse&, const PluginShareDeleteResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginShareDeleteResponse& value);
};

/// A marketplace that was added.
struct MarketplaceAddResponse {
  std::string marketplaceName;
  /// The folder that it was put into.
  std::string installedRoot;
  /// Whether it had been added before.
  bool alreadyAdded = false;
  friend bool operator==(const MarketplaceAddResponse&, const MarketplaceAddResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const MarketplaceAddResponse& value);
};

/// A marketplace that was removed.
struct MarketplaceRemoveResponse {
  std::string marketplaceName;
  /// The folder that it was in.
  std::optional<std::string> installedRoot;
  friend bool operator==(const MarketplaceRemoveResponse&, const MarketplaceRemoveResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const MarketplaceRemoveResponse& value);
};

/// A marketplace that could not be upgraded, and why.
struct MarketplaceUpgradeErrorInfo {
  std::string marketplaceName;
  std::string message;
  friend bool operator==(const MarketplaceUpgradeErrorInfo&, const MarketplaceUpgradeErrorInfo&);
  friend std::ostream& operator<<(std::ostream& stream, const MarketplaceUpgradeErrorInfo& value);
};

/// The outcome of an upgrade of marketplaces.
struct MarketplaceUpgradeResponse {
  /// The marketplaces that the upgrade was for.
  std::vector<std::string> selectedMarketplaces;
  /// The folders of those that changed.
  std::vector<std::string> upgradedRoots;
  std::vector<MarketplaceUpgradeErrorInfo> errors;
  friend bool operator==(const MarketplaceUpgradeResponse&, const MarketplaceUpgradeResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const MarketplaceUpgradeResponse& value);
};

}  // namespace ormel
