#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/Input/ThreadChoices.h"
#include "OrmelSDK/JSON/JSONValue.h"

// The server's configuration: what is in force, how it is changed, and what it has to comply with. Every type here has
// a JSON form, except `DynamicCodingKey`. The acknowledgement of a write is in EmptyResponses.h.
namespace ormel {

/// The effect of a written value on the present one: it takes its place, or is merged into it.
enum class ConfigMergeStrategy { replace, upsert };
std::ostream& operator<<(std::ostream& stream, const ConfigMergeStrategy& value);

/// Where data has to stay.
enum class ResidencyRequirement { us };
std::ostream& operator<<(std::ostream& stream, const ResidencyRequirement& value);

/// Whether a domain may be reached.
enum class NetworkDomainPermission { allow, deny };
std::ostream& operator<<(std::ostream& stream, const NetworkDomainPermission& value);

/// Whether a Unix socket may be used.
enum class NetworkUnixSocketPermission { allow, none };
std::ostream& operator<<(std::ostream& stream, const NetworkUnixSocketPermission& value);

/// The settings of a plugin.
struct PluginEnabledConfig {
  bool enabled = false;
  friend bool operator==(const PluginEnabledConfig&, const PluginEnabledConfig&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginEnabledConfig& value);
};

/// The settings of an app.
struct AppConfigSnapshot {
  bool enabled = false;
  /// The reviewer of approvals that the app needs.
  std::optional<ApprovalsReviewer> approvalsReviewer;
  friend bool operator==(const AppConfigSnapshot&, const AppConfigSnapshot&);
  friend std::ostream& operator<<(std::ostream& stream, const AppConfigSnapshot& value);
};

/// The settings of apps, by app. In JSON it is one object with the apps' ids and "_default" as keys.
struct AppsConfigSnapshot {
  /// The settings for apps that have none of their own; in JSON under "_default", which is therefore no key of `apps`.
  std::optional<AppConfigSnapshot> default_;
  std::map<std::string, AppConfigSnapshot> apps;
  friend bool operator==(const AppsConfigSnapshot&, const AppsConfigSnapshot&);
  friend std::ostream& operator<<(std::ostream& stream, const AppsConfigSnapshot& value);
};

/// The settings of a skill, which is named by its path or its name.
struct SkillConfigSnapshot {
  std::optional<std::string> path;
  std::optional<std::string> name;
  bool enabled = false;
  friend bool operator==(const SkillConfigSnapshot&, const SkillConfigSnapshot&);
  friend std::ostream& operator<<(std::ostream& stream, const SkillConfigSnapshot& value);
};

/// The settings of skills.
struct SkillsConfigSnapshot {
  std::vector<SkillConfigSnapshot> config;
  friend bool operator==(const SkillsConfigSnapshot&, const SkillsConfigSnapshot&);
  friend std::ostream& operator<<(std::ostream& stream, const SkillsConfigSnapshot& value);
};

/// The parts of the configuration in force that this library reads; others are ignored.
struct EffectiveOrmelConfig {
  /// The settings of plugins, by plugin.
  std::optional<std::map<std::string, PluginEnabledConfig>> plugins;
  std::optional<AppsConfigSnapshot> apps;
  std::optional<SkillsConfigSnapshot> skills;
  friend bool operator==(const EffectiveOrmelConfig&, const EffectiveOrmelConfig&);
  friend std::ostream& operator<<(std::ostream& stream, const EffectiveOrmelConfig& value);
};

/// The configuration in force.
struct ConfigReadResponse {
  EffectiveOrmelConfig config;
  friend bool operator==(const ConfigReadResponse&, const ConfigReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ConfigReadResponse& value);
};

/// One change of the configuration.
struct ConfigEdit {
  /// The keys down to the value, joined by dots, such as "hooks.state".
  std::string keyPath;
  /// JSON null is a value too.
  JSONValue value;
  ConfigMergeStrategy mergeStrategy = ConfigMergeStrategy::replace;
  friend bool operator==(const ConfigEdit&, const ConfigEdit&);
  friend std::ostream& operator<<(std::ostream& stream, const ConfigEdit& value);
};

/// The outcome of several changes that were written together.
struct ConfigBatchWriteResponse {
  /// The status in the server's own word.
  std::optional<std::string> status;
  /// The version of the configuration that was written, to expect at the next write.
  std::optional<std::string> version;
  /// The file that was written.
  std::optional<std::string> filePath;
  /// The server's remarks on values that another layer overrides, as they came.
  std::optional<JSONValue> overriddenMetadata;
  friend bool operator==(const ConfigBatchWriteResponse&, const ConfigBatchWriteResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ConfigBatchWriteResponse& value);
};

/// The requirements for the agent's use of the computer.
struct ComputerUseRequirements {
  std::optional<bool> allowLockedComputerUse;
  friend bool operator==(const ComputerUseRequirements&, const ComputerUseRequirements&);
  friend std::ostream& operator<<(std::ostream& stream, const ComputerUseRequirements& value);
};

/// The requirements for network access.
struct NetworkRequirements {
  std::optional<bool> enabled;
  std::optional<std::int64_t> httpPort;
  std::optional<std::int64_t> socksPort;
  std::optional<bool> allowUpstreamProxy;
  std::optional<bool> dangerouslyAllowNonLoopbackProxy;
  std::optional<bool> dangerouslyAllowAllUnixSockets;
  /// Permissions by domain.
  std::optional<std::map<std::string, NetworkDomainPermission>> domains;
  std::optional<bool> managedAllowedDomainsOnly;
  std::optional<std::vector<std::string>> allowedDomains;
  std::optional<std::vector<std::string>> deniedDomains;
  /// Permissions by path.
  std::optional<std::map<std::string, NetworkUnixSocketPermission>> unixSockets;
  std::optional<std::vector<std::string>> allowUnixSockets;
  std::optional<bool> allowLocalBinding;
  friend bool operator==(const NetworkRequirements&, const NetworkRequirements&);
  friend std::ostream& operator<<(std::ostream& stream, const NetworkRequirements& value);
};

/// The requirements that the configuration has to meet. An absent field requires nothing.
struct ConfigRequirements {
  std::optional<std::vector<ApprovalMode>> allowedApprovalPolicies;
  std::optional<std::vector<ApprovalsReviewer>> allowedApprovalsReviewers;
  std::optional<std::vector<SandboxMode>> allowedSandboxModes;
  std::optional<std::vector<std::string>> allowedPermissions;
  std::optional<std::vector<WebSearchMode>> allowedWebSearchModes;
  std::optional<bool> allowManagedHooksOnly;
  std::optional<ComputerUseRequirements> computerUse;
  /// Whether a feature has to be on or off, by feature.
  std::optional<std::map<std::string, bool>> featureRequirements;
  std::optional<ResidencyRequirement> enforceResidency;
  std::optional<NetworkRequirements> network;
  friend bool operator==(const ConfigRequirements&, const ConfigRequirements&);
  friend std::ostream& operator<<(std::ostream& stream, const ConfigRequirements& value);
};

/// The requirements on the configuration.
struct ConfigRequirementsReadResponse {
  /// Absent when there are none.
  std::optional<ConfigRequirements> requirements;
  friend bool operator==(const ConfigRequirementsReadResponse&, const ConfigRequirementsReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ConfigRequirementsReadResponse& value);
};

/// A key of an object whose keys are data: a text, never an index.
struct DynamicCodingKey {
  std::string stringValue;
  /// Always absent.
  std::optional<std::int64_t> intValue;

  explicit DynamicCodingKey(std::string text) : stringValue(std::move(text)) {}

  /// No integer is a key of such an object, so this yields nothing.
  static std::optional<DynamicCodingKey> fromInteger(std::int64_t) { return std::nullopt; }

  friend bool operator==(const DynamicCodingKey&, const DynamicCodingKey&);
  /// Writes the text.
  friend std::ostream& operator<<(std::ostream& stream, const DynamicCodingKey& value);
};

}  // namespace ormel
