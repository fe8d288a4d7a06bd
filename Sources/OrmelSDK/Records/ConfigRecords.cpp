#include "OrmelSDK/Records/ConfigRecords.h"

#include <ostream>
#include <string_view>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ConfigMergeStrategy> {
  static constexpr auto rule = closed;
  static constexpr Word<ConfigMergeStrategy> words[] = {
      {ConfigMergeStrategy::replace, "replace"},
      {ConfigMergeStrategy::upsert, "upsert"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ResidencyRequirement> {
  static constexpr auto rule = closed;
  static constexpr Word<ResidencyRequirement> words[] = {
      {ResidencyRequirement::us, "us"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::NetworkDomainPermission> {
  static constexpr auto rule = closed;
  static constexpr Word<NetworkDomainPermission> words[] = {
      {NetworkDomainPermission::allow, "allow"},
      {NetworkDomainPermission::deny, "deny"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::NetworkUnixSocketPermission> {
  static constexpr auto rule = closed;
  static constexpr Word<NetworkUnixSocketPermission> words[] = {
      {NetworkUnixSocketPermission::allow, "allow"},
      {NetworkUnixSocketPermission::none, "none"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PluginEnabledConfig> {
  static constexpr Field fields[] = {
      required<&PluginEnabledConfig::enabled>("enabled"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AppConfigSnapshot> {
  static constexpr Field fields[] = {
      required<&AppConfigSnapshot::enabled>("enabled"),
      optional<&AppConfigSnapshot::approvalsReviewer>("approvalsReviewer", "approvals_reviewer"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SkillConfigSnapshot> {
  static constexpr Field fields[] = {
      optional<&SkillConfigSnapshot::path>("path"),
      optional<&SkillConfigSnapshot::name>("name"),
      required<&SkillConfigSnapshot::enabled>("enabled"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SkillsConfigSnapshot> {
  static constexpr Field fields[] = {
      required<&SkillsConfigSnapshot::config>("config"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::EffectiveOrmelConfig> {
  static constexpr Field fields[] = {
      optional<&EffectiveOrmelConfig::plugins>("plugins"),
      optional<&EffectiveOrmelConfig::apps>("apps"),
      optional<&EffectiveOrmelConfig::skills>("skills"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ConfigReadResponse> {
  static constexpr Field fields[] = {
      required<&ConfigReadResponse::config>("config"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ConfigEdit> {
  static constexpr Field fields[] = {
      required<&ConfigEdit::keyPath>("keyPath"),
      required<&ConfigEdit::value>("value"),
      required<&ConfigEdit::mergeStrategy>("mergeStrategy"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ConfigBatchWriteResponse> {
  static constexpr Field fields[] = {
      optional<&ConfigBatchWriteResponse::status>("status"),
      optional<&ConfigBatchWriteResponse::version>("version"),
      optional<&ConfigBatchWriteResponse::filePath>("filePath"),
      optional<&ConfigBatchWriteResponse::overriddenMetadata>("overriddenMetadata"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ComputerUseRequirements> {
  static constexpr Field fields[] = {
      optional<&ComputerUseRequirements::allowLockedComputerUse>("allowLockedComputerUse"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::NetworkRequirements> {
  static constexpr Field fields[] = {
      optional<&NetworkRequirements::enabled>("enabled"),
      optional<&NetworkRequirements::httpPort>("httpPort"),
      optional<&NetworkRequirements::socksPort>("socksPort"),
      optional<&NetworkRequirements::allowUpstreamProxy>("allowUpstreamProxy"),
      optional<&NetworkRequirements::dangerouslyAllowNonLoopbackProxy>("dangerouslyAllowNonLoopbackProxy"),
      optional<&NetworkRequirements::dangerouslyAllowAllUnixSockets>("dangerouslyAllowAllUnixSockets"),
      optional<&NetworkRequirements::domains>("domains"),
      optional<&NetworkRequirements::managedAllowedDomainsOnly>("managedAllowedDomainsOnly"),
      optional<&NetworkRequirements::allowedDomains>("allowedDomains"),
      optional<&NetworkRequirements::deniedDomains>("deniedDomains"),
      optional<&NetworkRequirements::unixSockets>("unixSockets"),
      optional<&NetworkRequirements::allowUnixSockets>("allowUnixSockets"),
      optional<&NetworkRequirements::allowLocalBinding>("allowLocalBinding"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ConfigRequirements> {
  static constexpr Field fields[] = {
      optional<&ConfigRequirements::allowedApprovalPolicies>("allowedApprovalPolicies"),
      optional<&ConfigRequirements::allowedApprovalsReviewers>("allowedApprovalsReviewers"),
      optional<&ConfigRequirements::allowedSandboxModes>("allowedSandboxModes"),
      optional<&ConfigRequirements::allowedPermissions>("allowedPermissions"),
      optional<&ConfigRequirements::allowedWebSearchModes>("allowedWebSearchModes"),
      optional<&ConfigRequirements::allowManagedHooksOnly>("allowManagedHooksOnly"),
      optional<&ConfigRequirements::computerUse>("computerUse"),
      optional<&ConfigRequirements::featureRequirements>("featureRequirements"),
      optional<&ConfigRequirements::enforceResidency>("enforceResidency"),
      optional<&ConfigRequirements::network>("network"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ConfigRequirementsReadResponse> {
  static constexpr Field fields[] = {
      optional<&ConfigRequirementsReadResponse::requirements>("requirements"),
  };
};

namespace ormel::coding {

namespace {

constexpr std::string_view defaultAppKey = "_default";

void decodeApps(AppsConfigSnapshot& into, const JSONValue& value, const CodingPath& path) {
  const JSONObject* const object = value.objectValue();
  if (!object) failUnexpected("AppsConfigSnapshot", value, path);
  for (const auto& [name, settings] : *object) {
    DynamicCodingKey key{std::string(name)};
    if (key.stringValue != defaultAppKey) {
      AppConfigSnapshot& app = into.apps[std::move(key.stringValue)];
      Codec<AppConfigSnapshot>::decodeInto(app, settings, path.at(name));
    } else if (!settings.isNull()) {
      Codec<AppConfigSnapshot>::decodeInto(into.default_.emplace(), settings, path.at(name));
    }
  }
}

JSONValue encodeApps(const AppsConfigSnapshot& snapshot) {
  std::vector<JSONMemberInit> members;
  members.reserve(snapshot.apps.size() + 1);
  if (snapshot.default_) members.emplace_back(defaultAppKey, Codec<AppConfigSnapshot>::encode(*snapshot.default_));
  for (const auto& [name, app] : snapshot.apps) members.emplace_back(name, Codec<AppConfigSnapshot>::encode(app));
  return JSONValue::object(members);
}

}  // namespace

}  // namespace ormel::coding

namespace ormel {

std::ostream& operator<<(std::ostream& stream, const DynamicCodingKey& value) { return stream << value.stringValue; }

}  // namespace ormel

ORMEL_DEFINE_ENUMERATION(ConfigMergeStrategy)
ORMEL_DEFINE_ENUMERATION(ResidencyRequirement)
ORMEL_DEFINE_ENUMERATION(NetworkDomainPermission)
ORMEL_DEFINE_ENUMERATION(NetworkUnixSocketPermission)
ORMEL_DEFINE_EQUALITY(AppsConfigSnapshot)
ORMEL_DEFINE_EQUALITY(DynamicCodingKey)
ORMEL_DEFINE_CODEC_BY(AppsConfigSnapshot, decodeApps, encodeApps)
ORMEL_DEFINE_RECORD(PluginEnabledConfig)
ORMEL_DEFINE_RECORD(AppConfigSnapshot)
ORMEL_DEFINE_RECORD(SkillConfigSnapshot)
ORMEL_DEFINE_RECORD(SkillsConfigSnapshot)
ORMEL_DEFINE_RECORD(EffectiveOrmelConfig)
ORMEL_DEFINE_RECORD(ConfigReadResponse)
ORMEL_DEFINE_RECORD(ConfigEdit)
ORMEL_DEFINE_RECORD(ConfigBatchWriteResponse)
ORMEL_DEFINE_RECORD(ComputerUseRequirements)
ORMEL_DEFINE_RECORD(NetworkRequirements)
ORMEL_DEFINE_RECORD(ConfigRequirements)
ORMEL_DEFINE_RECORD(ConfigRequirementsReadResponse)
