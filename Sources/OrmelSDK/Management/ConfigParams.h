#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The optional arguments of the calls about configuration, models, permissions, features, skills and hooks. One that is
// given is sent, also when it is empty; one that is absent is left to the server.
namespace ormel {

// OrmelSDK/Records/ConfigRecords.h
enum class ConfigMergeStrategy;
struct ConfigEdit;

// OrmelSDK/Records/ExternalAgentRecords.h
struct ExternalAgentConfigMigrationItem;

/// Says which configuration `readConfig` brings.
struct ReadConfigParams {
  ReadConfigParams() {}
  bool includeLayers = false;
  /// The directory whose configuration is in force.
  std::optional<std::string> cwd;
};

/// The condition of `writeConfigValue`.
struct WriteConfigValueParams {
  WriteConfigValueParams() {}
  /// The server refuses the write if the configuration is of another version by now.
  std::optional<std::string> expectedVersion;
};

/// Says where `batchWriteConfig` writes, and under which condition.
struct BatchWriteConfigParams {
  BatchWriteConfigParams() {}
  std::optional<std::string> filePath;
  /// The server refuses the write if the configuration is of another version by now.
  std::optional<std::string> expectedVersion;
  /// Whether the running server takes over what was written.
  std::optional<bool> reloadUserConfig;
};

/// Chooses the page of `listModels`. If nothing is given, the call goes out without params.
struct ListModelsParams {
  ListModelsParams() {}
  /// `nextCursor` of the page before.
  std::optional<std::string> cursor;
  /// The most models on a page.
  std::optional<std::int64_t> limit;
  /// Whether models that are not offered for choice are listed too.
  std::optional<bool> includeHidden;
};

/// Narrows `listAllModels`.
struct ListAllModelsParams {
  ListAllModelsParams() {}
  /// Whether models that are not offered for choice are listed too.
  bool includeHidden = false;
};

/// Chooses the page of `listPermissionProfiles`.
struct ListPermissionProfilesParams {
  ListPermissionProfilesParams() {}
  std::optional<std::string> cursor;
  std::optional<std::int64_t> limit;
  /// The directory whose configuration is in force.
  std::optional<std::string> cwd;
};

/// Narrows `listAllPermissionProfiles`.
struct ListAllPermissionProfilesParams {
  ListAllPermissionProfilesParams() {}
  /// The directory whose configuration is in force.
  std::optional<std::string> cwd;
};

/// Chooses the page of `listExperimentalFeatures`.
struct ListExperimentalFeaturesParams {
  ListExperimentalFeaturesParams() {}
  std::optional<std::string> cursor;
  std::optional<std::int64_t> limit;
  /// The thread whose configuration is in force.
  std::optional<std::string> threadID;
};

/// Narrows `listSkills`.
struct ListSkillsParams {
  ListSkillsParams() {}
  /// The directories whose skills are listed.
  std::optional<std::vector<std::string>> cwds;
  /// Whether the server reads the skills' files again.
  std::optional<bool> forceReload;
};

/// Names the skill of `writeSkillConfig`, by its path or its name.
struct WriteSkillConfigParams {
  WriteSkillConfigParams() {}
  std::optional<std::string> path;
  std::optional<std::string> name;
};

/// Narrows `listHooks`.
struct ListHooksParams {
  ListHooksParams() {}
  /// The directories whose hooks are listed.
  std::optional<std::vector<std::string>> cwds;
};

/// Says where `detectExternalAgentConfig` looks.
struct DetectExternalAgentConfigParams {
  DetectExternalAgentConfigParams() {}
  /// Whether the user's home directory is searched.
  std::optional<bool> includeHome;
  std::optional<std::vector<std::string>> cwds;
};

/// Says where the pieces of `importExternalAgentConfig` come from.
struct ImportExternalAgentConfigParams {
  ImportExternalAgentConfigParams() {}
  /// The source in the server's own word.
  std::optional<std::string> source;
};

}  // namespace ormel
