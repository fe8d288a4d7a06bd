#include "OrmelSDK/Records/PluginRecords.h"

#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

template <>
struct ormel::coding::EnumerationTable<ormel::PluginInstallPolicy> {
  static constexpr auto rule = closed;
  static constexpr Word<PluginInstallPolicy> words[] = {
      {PluginInstallPolicy::notAvailable, "NOT_AVAILABLE"},
      {PluginInstallPolicy::available, "AVAILABLE"},
      {PluginInstallPolicy::installedByDefault, "INSTALLED_BY_DEFAULT"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PluginAuthPolicy> {
  static constexpr auto rule = closed;
  static constexpr Word<PluginAuthPolicy> words[] = {
      {PluginAuthPolicy::onInstall, "ON_INSTALL"},
      {PluginAuthPolicy::onUse, "ON_USE"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PluginAvailability> {
  static constexpr auto rule = exactOr(PluginAvailability::unknown);
  static constexpr Word<PluginAvailability> words[] = {
      {PluginAvailability::available, "AVAILABLE"},
      {PluginAvailability::available, "ENABLED"},
      {PluginAvailability::disabledByAdmin, "DISABLED_BY_ADMIN"},
      {PluginAvailability::unknown, "unknown"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PluginListMarketplaceKind> {
  static constexpr auto rule = closed;
  static constexpr Word<PluginListMarketplaceKind> words[] = {
      {PluginListMarketplaceKind::local, "local"},
      {PluginListMarketplaceKind::vertical, "vertical"},
      {PluginListMarketplaceKind::workspaceDirectory, "workspace-directory"},
      {PluginListMarketplaceKind::sharedWithMe, "shared-with-me"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PluginShareDiscoverability> {
  static constexpr auto rule = closed;
  static constexpr Word<PluginShareDiscoverability> words[] = {
      {PluginShareDiscoverability::listed, "LISTED"},
      {PluginShareDiscoverability::unlisted, "UNLISTED"},
      {PluginShareDiscoverability::private_, "PRIVATE"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PluginShareUpdateDiscoverability> {
  static constexpr auto rule = closed;
  static constexpr Word<PluginShareUpdateDiscoverability> words[] = {
      {PluginShareUpdateDiscoverability::unlisted, "UNLISTED"},
      {PluginShareUpdateDiscoverability::private_, "PRIVATE"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PluginSharePrincipalType> {
  static constexpr auto rule = closed;
  static constexpr Word<PluginSharePrincipalType> words[] = {
      {PluginSharePrincipalType::user, "user"},
      {PluginSharePrincipalType::group, "group"},
      {PluginSharePrincipalType::workspace, "workspace"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PluginSharePrincipalRole> {
  static constexpr auto rule = closed;
  static constexpr Word<PluginSharePrincipalRole> words[] = {
      {PluginSharePrincipalRole::reader, "reader"},
      {PluginSharePrincipalRole::editor, "editor"},
      {PluginSharePrincipalRole::owner, "owner"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PluginShareTargetRole> {
  static constexpr auto rule = closed;
  static constexpr Word<PluginShareTargetRole> words[] = {
      {PluginShareTargetRole::reader, "reader"},
      {PluginShareTargetRole::editor, "editor"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::LocalPluginSource> {
  static constexpr Field fields[] = {
      required<&LocalPluginSource::path>("path"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GitPluginSource> {
  static constexpr Field fields[] = {
      required<&GitPluginSource::url>("url"),
      optional<&GitPluginSource::refName>("refName"),
      optional<&GitPluginSource::sha>("sha"),
      optional<&GitPluginSource::path>("path"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::RemotePluginSource> : NoFields {};

template <>
struct ormel::coding::VariantTable<ormel::PluginSource> : CasesOf<PluginSource> {
  static constexpr Case cases[] = {
      variantCase<LocalPluginSource>("local"),
      variantCase<GitPluginSource>("git"),
      variantCase<RemotePluginSource>("remote"),
  };
  static PluginSource decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
  static PluginSource decodeUntyped(const JSONValue& value, const CodingPath& path);
  static JSONValue encodeUnknown(const PluginSource& source);
};

namespace ormel::coding {

PluginSource VariantTable<PluginSource>::decodeUnknown(std::string_view type, const JSONValue& value,
                                                       const CodingPath& path) {
  UnknownPluginSource source{std::string(type), {}};
  Codec<JSONValue>::decodeInto(source.payload, value, path);
  return source;
}

PluginSource VariantTable<PluginSource>::decodeUntyped(const JSONValue& value, const CodingPath& path) {
  return decodeUnknown("unknown", value, path);
}

JSONValue VariantTable<PluginSource>::encodeUnknown(const PluginSource& source) {
  return std::get<UnknownPluginSource>(source.value).payload;
}

namespace {

JSONValue printedUnknownSource(const UnknownPluginSource& source) { return source.payload; }

}  // namespace

}  // namespace ormel::coding

template <>
struct ormel::coding::RecordTable<ormel::AppSummary> {
  static constexpr Field fields[] = {
      required<&AppSummary::id>("id"),
      required<&AppSummary::name>("name"),
      optional<&AppSummary::description>("description"),
      optional<&AppSummary::installURL>("installUrl"),
      defaulted<&AppSummary::needsAuth>("needsAuth"),
  };
  // Without a word from the server, an app that has to be connected needs a sign-in.
  static void finish(AppSummary& app, const JSONObject& object, const CodingPath&) {
    if (!hasValue(object, "needsAuth")) app.needsAuth = app.installURL.has_value();
  }
};

template <>
struct ormel::coding::RecordTable<ormel::PluginInterface> {
  static constexpr Field fields[] = {
      optional<&PluginInterface::displayName>("displayName"),
      optional<&PluginInterface::shortDescription>("shortDescription"),
      optional<&PluginInterface::longDescription>("longDescription"),
      optional<&PluginInterface::developerName>("developerName"),
      optional<&PluginInterface::category>("category"),
      defaulted<&PluginInterface::capabilities>("capabilities"),
      optional<&PluginInterface::websiteURL>("websiteUrl"),
      optional<&PluginInterface::privacyPolicyURL>("privacyPolicyUrl"),
      optional<&PluginInterface::termsOfServiceURL>("termsOfServiceUrl"),
      optional<&PluginInterface::defaultPrompt>("defaultPrompt"),
      optional<&PluginInterface::brandColor>("brandColor"),
      optional<&PluginInterface::composerIcon>("composerIcon"),
      optional<&PluginInterface::composerIconURL>("composerIconUrl"),
      optional<&PluginInterface::logo>("logo"),
      optional<&PluginInterface::logoURL>("logoUrl"),
      defaulted<&PluginInterface::screenshots>("screenshots"),
      defaulted<&PluginInterface::screenshotURLs>("screenshotUrls"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginShareTarget> {
  static constexpr Field fields[] = {
      required<&PluginShareTarget::principalType>("principalType"),
      required<&PluginShareTarget::principalID>("principalId"),
      required<&PluginShareTarget::role>("role"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginSharePrincipal> {
  static constexpr Field fields[] = {
      required<&PluginSharePrincipal::principalType>("principalType"),
      required<&PluginSharePrincipal::principalID>("principalId"),
      required<&PluginSharePrincipal::role>("role"),
      required<&PluginSharePrincipal::name>("name"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginShareContext> {
  static constexpr Field fields[] = {
      required<&PluginShareContext::remotePluginID>("remotePluginId"),
      optional<&PluginShareContext::remoteVersion>("remoteVersion"),
      optional<&PluginShareContext::discoverability>("discoverability"),
      optional<&PluginShareContext::shareURL>("shareUrl"),
      optional<&PluginShareContext::creatorAccountUserID>("creatorAccountUserId"),
      optional<&PluginShareContext::creatorName>("creatorName"),
      optional<&PluginShareContext::sharePrincipals>("sharePrincipals"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginSummary> {
  static constexpr Field fields[] = {
      required<&PluginSummary::id>("id"),
      optional<&PluginSummary::remotePluginID>("remotePluginId"),
      optional<&PluginSummary::version>("version"),
      optional<&PluginSummary::localVersion>("localVersion"),
      required<&PluginSummary::name>("name"),
      optional<&PluginSummary::shareContext>("shareContext"),
      required<&PluginSummary::source>("source"),
      required<&PluginSummary::installed>("installed"),
      optional<&PluginSummary::installedAt>("installedAt"),
      required<&PluginSummary::enabled>("enabled"),
      required<&PluginSummary::installPolicy>("installPolicy"),
      optional<&PluginSummary::installPolicySource>("installPolicySource"),
      optional<&PluginSummary::mustShowInstallationInterstitial>("mustShowInstallationInterstitial"),
      required<&PluginSummary::authPolicy>("authPolicy"),
      defaulted<&PluginSummary::availability>("availability"),
      optional<&PluginSummary::disabledReason>("disabledReason"),
      optional<&PluginSummary::eligiblePlanTypes>("eligiblePlanTypes"),
      optional<&PluginSummary::interface>("interface"),
      defaulted<&PluginSummary::keywords>("keywords"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::MarketplaceLoadErrorInfo> {
  static constexpr Field fields[] = {
      required<&MarketplaceLoadErrorInfo::marketplacePath>("marketplacePath"),
      required<&MarketplaceLoadErrorInfo::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::MarketplaceInterface> {
  static constexpr Field fields[] = {
      optional<&MarketplaceInterface::displayName>("displayName"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginMarketplaceEntry> {
  static constexpr Field fields[] = {
      required<&PluginMarketplaceEntry::name>("name"),
      optional<&PluginMarketplaceEntry::path>("path"),
      optional<&PluginMarketplaceEntry::interface>("interface"),
      required<&PluginMarketplaceEntry::plugins>("plugins"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginListResponse> {
  static constexpr Field fields[] = {
      required<&PluginListResponse::marketplaces>("marketplaces"),
      defaulted<&PluginListResponse::marketplaceLoadErrors>("marketplaceLoadErrors"),
      optional<&PluginListResponse::remoteSyncError>("remoteSyncError"),
      defaulted<&PluginListResponse::featuredPluginIDs>("featuredPluginIds"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginInstalledResponse> {
  static constexpr Field fields[] = {
      required<&PluginInstalledResponse::marketplaces>("marketplaces"),
      required<&PluginInstalledResponse::marketplaceLoadErrors>("marketplaceLoadErrors"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginHookSummary> {
  static constexpr Field fields[] = {
      required<&PluginHookSummary::key>("key"),
      required<&PluginHookSummary::eventName>("eventName"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginDetail> {
  static constexpr Field fields[] = {
      required<&PluginDetail::marketplaceName>("marketplaceName"),
      optional<&PluginDetail::marketplacePath>("marketplacePath"),
      required<&PluginDetail::summary>("summary"),
      optional<&PluginDetail::description>("description"),
      defaulted<&PluginDetail::skills>("skills"),
      defaulted<&PluginDetail::hooks>("hooks"),
      defaulted<&PluginDetail::apps>("apps"),
      defaulted<&PluginDetail::mcpServers>("mcpServers"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginReadResponse> {
  static constexpr Field fields[] = {
      required<&PluginReadResponse::plugin>("plugin"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginSkillReadResponse> {
  static constexpr Field fields[] = {
      optional<&PluginSkillReadResponse::contents>("contents"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginInstallResponse> {
  static constexpr Field fields[] = {
      required<&PluginInstallResponse::authPolicy>("authPolicy"),
      required<&PluginInstallResponse::appsNeedingAuth>("appsNeedingAuth"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginUninstallResponse> : NoFields {};

template <>
struct ormel::coding::RecordTable<ormel::PluginShareListItem> {
  static constexpr Field fields[] = {
      required<&PluginShareListItem::plugin>("plugin"),
      optional<&PluginShareListItem::shareURL>("shareUrl"),
      optional<&PluginShareListItem::localPluginPath>("localPluginPath"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginShareListResponse> {
  static constexpr Field fields[] = {
      required<&PluginShareListResponse::data>("data"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginShareSaveResponse> {
  static constexpr Field fields[] = {
      required<&PluginShareSaveResponse::remotePluginID>("remotePluginId"),
      required<&PluginShareSaveResponse::shareURL>("shareUrl"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginShareUpdateTargetsResponse> {
  static constexpr Field fields[] = {
      required<&PluginShareUpdateTargetsResponse::principals>("principals"),
      required<&PluginShareUpdateTargetsResponse::discoverability>("discoverability"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginShareCheckoutResponse> {
  static constexpr Field fields[] = {
      required<&PluginShareCheckoutResponse::remotePluginID>("remotePluginId"),
      required<&PluginShareCheckoutResponse::pluginID>("pluginId"),
      required<&PluginShareCheckoutResponse::pluginName>("pluginName"),
      required<&PluginShareCheckoutResponse::pluginPath>("pluginPath"),
      required<&PluginShareCheckoutResponse::marketplaceName>("marketplaceName"),
      required<&PluginShareCheckoutResponse::marketplacePath>("marketplacePath"),
      optional<&PluginShareCheckoutResponse::remoteVersion>("remoteVersion"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginShareDeleteResponse> : NoFields {};

template <>
struct ormel::coding::RecordTable<ormel::MarketplaceAddResponse> {
  static constexpr Field fields[] = {
      required<&MarketplaceAddResponse::marketplaceName>("marketplaceName"),
      required<&MarketplaceAddResponse::installedRoot>("installedRoot"),
      required<&MarketplaceAddResponse::alreadyAdded>("alreadyAdded"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::MarketplaceRemoveResponse> {
  static constexpr Field fields[] = {
      required<&MarketplaceRemoveResponse::marketplaceName>("marketplaceName"),
      optional<&MarketplaceRemoveResponse::installedRoot>("installedRoot"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::MarketplaceUpgradeErrorInfo> {
  static constexpr Field fields[] = {
      required<&MarketplaceUpgradeErrorInfo::marketplaceName>("marketplaceName"),
      required<&MarketplaceUpgradeErrorInfo::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::MarketplaceUpgradeResponse> {
  static constexpr Field fields[] = {
      required<&MarketplaceUpgradeResponse::selectedMarketplaces>("selectedMarketplaces"),
      required<&MarketplaceUpgradeResponse::upgradedRoots>("upgradedRoots"),
      required<&MarketplaceUpgradeResponse::errors>("errors"),
  };
};

namespace ormel {

PluginSource::PluginSource() = default;
PluginSource::PluginSource(const PluginSource&) = default;
PluginSource::PluginSource(PluginSource&&) noexcept = default;
PluginSource& PluginSource::operator=(const PluginSource&) = default;
PluginSource& PluginSource::operator=(PluginSource&&) noexcept = default;
PluginSource::~PluginSource() = default;

PluginSource::PluginSource(LocalPluginSource source) : value(std::move(source)) {}
PluginSource::PluginSource(GitPluginSource source) : value(std::move(source)) {}
PluginSource::PluginSource(RemotePluginSource source) : value(source) {}
PluginSource::PluginSource(UnknownPluginSource source) : value(std::move(source)) {}

PluginSource PluginSource::local(std::string path) { return LocalPluginSource{std::move(path)}; }
PluginSource PluginSource::git(std::string url, std::optional<std::string> refName, std::optional<std::string> sha,
                               std::optional<std::string> path) {
  return GitPluginSource{std::move(url), std::move(refName), std::move(sha), std::move(path)};
}
PluginSource PluginSource::remote() { return RemotePluginSource(); }
PluginSource PluginSource::unknown(std::string type, JSONValue payload) {
  return UnknownPluginSource{std::move(type), std::move(payload)};
}

}  // namespace ormel

ORMEL_DEFINE_ENUMERATION(PluginInstallPolicy)
ORMEL_DEFINE_ENUMERATION(PluginAuthPolicy)
ORMEL_DEFINE_ENUMERATION(PluginAvailability)
ORMEL_DEFINE_ENUMERATION(PluginListMarketplaceKind)
ORMEL_DEFINE_ENUMERATION(PluginShareDiscoverability)
ORMEL_DEFINE_ENUMERATION(PluginShareUpdateDiscoverability)
ORMEL_DEFINE_ENUMERATION(PluginSharePrincipalType)
ORMEL_DEFINE_ENUMERATION(PluginSharePrincipalRole)
ORMEL_DEFINE_ENUMERATION(PluginShareTargetRole)
ORMEL_DEFINE_VOCABULARY(PluginInstallPolicySource)
ORMEL_DEFINE_VOCABULARY(PluginDisabledReason)
ORMEL_DEFINE_CASE(LocalPluginSource)
ORMEL_DEFINE_PRINTING(LocalPluginSource)
ORMEL_DEFINE_CASE(GitPluginSource)
ORMEL_DEFINE_PRINTING(GitPluginSource)
ORMEL_DEFINE_CASE(RemotePluginSource)
ORMEL_DEFINE_PRINTING(RemotePluginSource)
ORMEL_DEFINE_EQUALITY(UnknownPluginSource)
ORMEL_DEFINE_PRINTED_BY(UnknownPluginSource, printedUnknownSource)
ORMEL_DEFINE_VARIANT(PluginSource)
ORMEL_DEFINE_RECORD(AppSummary)
ORMEL_DEFINE_RECORD(PluginInterface)
ORMEL_DEFINE_RECORD(PluginShareTarget)
ORMEL_DEFINE_RECORD(PluginSharePrincipal)
ORMEL_DEFINE_RECORD(PluginShareContext)
ORMEL_DEFINE_RECORD(PluginSummary)
ORMEL_DEFINE_RECORD(MarketplaceLoadErrorInfo)
ORMEL_DEFINE_RECORD(MarketplaceInterface)
ORMEL_DEFINE_RECORD(PluginMarketplaceEntry)
ORMEL_DEFINE_RECORD(PluginListResponse)
ORMEL_DEFINE_RECORD(PluginInstalledResponse)
ORMEL_DEFINE_RECORD(PluginHookSummary)
ORMEL_DEFINE_RECORD(PluginDetail)
ORMEL_DEFINE_RECORD(PluginReadResponse)
ORMEL_DEFINE_RECORD(PluginSkillReadResponse)
ORMEL_DEFINE_RECORD(PluginInstallResponse)
ORMEL_DEFINE_RECORD(PluginUninstallResponse)
ORMEL_DEFINE_RECORD(PluginShareListItem)
ORMEL_DEFINE_RECORD(PluginShareListResponse)
ORMEL_DEFINE_RECORD(PluginShareSaveResponse)
ORMEL_DEFINE_RECORD(PluginShareUpdateTargetsResponse)
ORMEL_DEFINE_RECORD(PluginShareCheckoutResponse)
ORMEL_DEFINE_RECORD(PluginShareDeleteResponse)
ORMEL_DEFINE_RECORD(MarketplaceAddResponse)
ORMEL_DEFINE_RECORD(MarketplaceRemoveResponse)
ORMEL_DEFINE_RECORD(MarketplaceUpgradeErrorInfo)
ORMEL_DEFINE_RECORD(MarketplaceUpgradeResponse)
