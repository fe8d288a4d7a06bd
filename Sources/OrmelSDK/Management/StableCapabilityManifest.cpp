#include "OrmelSDK/Management/StableCapabilityManifest.h"

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::OrmelCapabilityStability> {
  static constexpr auto rule = closed;
  static constexpr Word<OrmelCapabilityStability> words[] = {
      {OrmelCapabilityStability::stable, "stable"},
      {OrmelCapabilityStability::experimental, "experimental"},
      {OrmelCapabilityStability::legacy, "legacy"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::OrmelCapabilityStatus> {
  static constexpr auto rule = closed;
  static constexpr Word<OrmelCapabilityStatus> words[] = {
      {OrmelCapabilityStatus::implemented, "implemented"},
      {OrmelCapabilityStatus::compatibilityOnly, "compatibilityOnly"},
      {OrmelCapabilityStatus::notIntegrated, "notIntegrated"},
      {OrmelCapabilityStatus::notExposed, "notExposed"},
      {OrmelCapabilityStatus::notApplicable, "notApplicable"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::OrmelCapabilityTestStatus> {
  static constexpr auto rule = closed;
  static constexpr Word<OrmelCapabilityTestStatus> words[] = {
      {OrmelCapabilityTestStatus::integrationTested, "integrationTested"},
      {OrmelCapabilityTestStatus::unitTested, "unitTested"},
      {OrmelCapabilityTestStatus::notTested, "notTested"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::OrmelCapabilityManifestEntry> {
  static constexpr Field fields[] = {
      required<&OrmelCapabilityManifestEntry::method>("method"),
      required<&OrmelCapabilityManifestEntry::stability>("stability"),
      required<&OrmelCapabilityManifestEntry::sdkStatus>("sdkStatus"),
      required<&OrmelCapabilityManifestEntry::kestrionStatus>("kestrionStatus"),
      required<&OrmelCapabilityManifestEntry::uiStatus>("uiStatus"),
      required<&OrmelCapabilityManifestEntry::testStatus>("testStatus"),
  };
};

ORMEL_DEFINE_ENUMERATION(OrmelCapabilityStability)
ORMEL_DEFINE_ENUMERATION(OrmelCapabilityStatus)
ORMEL_DEFINE_ENUMERATION(OrmelCapabilityTestStatus)
ORMEL_DEFINE_RECORD(OrmelCapabilityManifestEntry)

namespace ormel {

namespace {

using RowStability = OrmelCapabilityStability;
using RowStatus = OrmelCapabilityStatus;

/// A method that differs from those that are integrated throughout.
struct IndividualRow {
  std::string_view method;
  RowStability stability;
  RowStatus sdkStatus;
  RowStatus kestrionStatus;
  RowStatus uiStatus;
};

constexpr IndividualRow individualRows[] = {
    {"initialize", RowStability::stable, RowStatus::implemented, RowStatus::implemented, RowStatus::notApplicable},
    {"item/commandExecution/requestApproval", RowStability::stable, RowStatus::implemented, RowStatus::implemented,
     RowStatus::implemented},
    {"item/fileChange/requestApproval", RowStability::stable, RowStatus::implemented, RowStatus::implemented,
     RowStatus::implemented},
    {"item/permissions/requestApproval", RowStability::stable, RowStatus::implemented, RowStatus::implemented,
     RowStatus::implemented},
    {"serverRequest/resolved", RowStability::stable, RowStatus::implemented, RowStatus::implemented,
     RowStatus::notApplicable},
    {"mcpServer/elicitation/request", RowStability::stable, RowStatus::implemented, RowStatus::implemented,
     RowStatus::implemented},
    {"attestation/generate", RowStability::stable, RowStatus::implemented, RowStatus::notIntegrated,
     RowStatus::notApplicable},
    {"model/list", RowStability::stable, RowStatus::implemented, RowStatus::implemented, RowStatus::implemented},
    {"permissionProfile/list", RowStability::stable, RowStatus::implemented, RowStatus::implemented,
     RowStatus::implemented},
    {"configRequirements/read", RowStability::stable, RowStatus::implemented, RowStatus::implemented,
     RowStatus::implemented},
    {"thread/items/list", RowStability::experimental, RowStatus::compatibilityOnly, RowStatus::notExposed,
     RowStatus::notExposed},
    {"thread/turns/items/list", RowStability::legacy, RowStatus::compatibilityOnly, RowStatus::notExposed,
     RowStatus::notExposed},
    {"app/read", RowStability::stable, RowStatus::implemented, RowStatus::notIntegrated, RowStatus::notExposed},
};

constexpr std::string_view integratedThroughout[] = {
    "app/list",
    "app/installed",
    "app/list/updated",
    "skills/list",
    "skills/extraRoots/set",
    "skills/changed",
    "plugin/list",
    "plugin/installed",
    "plugin/read",
    "plugin/install",
    "plugin/uninstall",
    "mcpServerStatus/list",
    "mcpServer/oauth/login",
    "mcpServer/oauthLogin/completed",
    "mcpServer/startupStatus/updated",
    "config/mcpServer/reload",
    "hooks/list",
    "config/batchWrite",
    "account/read",
    "account/login/start",
    "account/login/cancel",
    "account/login/completed",
    "account/logout",
    "account/rateLimits/read",
    "account/rateLimits/updated",
    "modelProvider/authRecoveryStarted",
    "modelProvider/authRecoveryCompleted",
    "autoApprovalReview/strictReviewRequired",
    "deprecationNotice",
    "configWarning",
    "account/rateLimitResetCredit/consume",
    "account/usage/read",
    "account/workspaceMessages/read",
    "account/sendAddCreditsNudgeEmail",
    "account/updated",
    "thread/fork",
    "thread/archive",
    "thread/delete",
    "thread/unarchive",
    "thread/name/set",
    "thread/compact/start",
    "review/start",
    "feedback/upload",
};

constexpr std::array schemaTokens = std::to_array<std::string_view>({
    "initialize",
    "item/commandExecution/requestApproval",
    "item/fileChange/requestApproval",
    "item/permissions/requestApproval",
    "serverRequest/resolved",
    "mcpServer/elicitation/request",
    "attestation/generate",
    "model/list",
    "permissionProfile/list",
    "configRequirements/read",
    "app/list",
    "app/installed",
    "app/read",
    "app/list/updated",
    "skills/list",
    "skills/extraRoots/set",
    "skills/changed",
    "plugin/list",
    "plugin/installed",
    "plugin/read",
    "plugin/install",
    "plugin/uninstall",
    "mcpServerStatus/list",
    "mcpServer/oauth/login",
    "mcpServer/oauthLogin/completed",
    "mcpServer/startupStatus/updated",
    "config/mcpServer/reload",
    "hooks/list",
    "config/batchWrite",
    "account/read",
    "account/login/start",
    "account/login/cancel",
    "account/login/completed",
    "account/logout",
    "account/rateLimits/read",
    "account/rateLimits/updated",
    "modelProvider/authRecoveryStarted",
    "modelProvider/authRecoveryCompleted",
    "autoApprovalReview/strictReviewRequired",
    "deprecationNotice",
    "configWarning",
    "account/rateLimitResetCredit/consume",
    "account/usage/read",
    "account/workspaceMessages/read",
    "account/sendAddCreditsNudgeEmail",
    "account/updated",
    "thread/fork",
    "thread/archive",
    "thread/delete",
    "thread/unarchive",
    "thread/name/set",
    "thread/compact/start",
    "review/start",
    "feedback/upload",
});

OrmelCapabilityManifestEntry manifestEntryOf(const IndividualRow& row) {
  return {std::string(row.method), row.stability, row.sdkStatus,
          row.kestrionStatus,      row.uiStatus,  OrmelCapabilityTestStatus::integrationTested};
}

std::vector<OrmelCapabilityManifestEntry> fullyIntegrated(std::span<const std::string_view> methods) {
  std::vector<OrmelCapabilityManifestEntry> entries;
  for (const auto method : methods) {
    entries.push_back(manifestEntryOf(
        {method, RowStability::stable, RowStatus::implemented, RowStatus::implemented, RowStatus::implemented}));
  }
  return entries;
}

std::vector<OrmelCapabilityManifestEntry> manifestEntries() {
  std::vector<OrmelCapabilityManifestEntry> entries;
  std::ranges::transform(individualRows, std::back_inserter(entries), manifestEntryOf);
  std::ranges::move(fullyIntegrated(integratedThroughout), std::back_inserter(entries));
  return entries;
}

}  // namespace

const std::vector<OrmelCapabilityManifestEntry>& OrmelStableCapabilityManifest::entries() {
  static const auto& entries = detail::neverDestroyed<std::vector<OrmelCapabilityManifestEntry>>(manifestEntries());
  return entries;
}

std::optional<OrmelCapabilityManifestEntry> OrmelStableCapabilityManifest::entry(std::string_view method) {
  const auto found = std::ranges::find(entries(), method, &OrmelCapabilityManifestEntry::method);
  return found == entries().end() ? std::nullopt : std::optional(*found);
}

std::span<const std::string_view> OrmelStableCapabilityManifest::stableSchemaTokens() noexcept { return schemaTokens; }

}  // namespace ormel

std::size_t std::hash<ormel::OrmelCapabilityManifestEntry>::operator()(
    const ormel::OrmelCapabilityManifestEntry& entry) const noexcept {
  std::size_t mixed = std::hash<std::string>()(entry.method);
  const auto mix = [&mixed](auto value) { mixed = mixed * 31 + static_cast<std::size_t>(value); };
  mix(entry.stability);
  mix(entry.sdkStatus);
  mix(entry.kestrionStatus);
  mix(entry.uiStatus);
  mix(entry.testStatus);
  return mixed;
}
