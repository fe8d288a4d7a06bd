#pragma once

#include <map>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Management/Call.h"
#include "OrmelSDK/Management/ConfigParams.h"
#include "OrmelSDK/Records/ConfigRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ExperimentalFeatureRecords.h"
#include "OrmelSDK/Records/ExternalAgentRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PermissionRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"

/// The calls about configuration, models, permissions, features, skills and hooks, by the names of the operations that
/// perform them.
namespace ormel::detail::calls {

Call<ConfigReadResponse> readConfig(const ReadConfigParams& params);
Call<ConfigRequirementsReadResponse> readConfigRequirements();
DroppedCall<ConfigWriteAck> writeConfigValue(const std::string& keyPath, const JSONValue& value,
                                             ConfigMergeStrategy mergeStrategy, const WriteConfigValueParams& params);
Call<ConfigBatchWriteResponse> batchWriteConfig(const std::vector<ConfigEdit>& edits,
                                                const BatchWriteConfigParams& params);
Call<ConfigBatchWriteResponse> setHookEnabled(const std::string& key, bool enabled);
Call<ModelListResponse> listModels(const ListModelsParams& params);
Call<ModelProviderCapabilitiesReadResponse> readModelProviderCapabilities();
Call<PermissionProfileListResponse> listPermissionProfiles(const ListPermissionProfilesParams& params);
Call<ExperimentalFeatureListResponse> listExperimentalFeatures(const ListExperimentalFeaturesParams& params);
Call<ExperimentalFeatureEnablementSetResponse> setExperimentalFeatureEnablement(
    const std::map<std::string, bool>& enablement);
Call<SkillsListResponse> listSkills(const ListSkillsParams& params);
DroppedCall<ConfigWriteAck> writeSkillConfig(bool enabled, const WriteSkillConfigParams& params);
NotificationCall setSkillExtraRoots(const std::vector<std::string>& extraRoots);
Call<HooksListResponse> listHooks(const ListHooksParams& params);
Call<HooksListResponse> listHooks(const std::vector<std::string>& cwds);
Call<ExternalAgentConfigDetectResponse> detectExternalAgentConfig(const DetectExternalAgentConfigParams& params);
Call<ExternalAgentConfigImportResponse> importExternalAgentConfig(
    const std::vector<ExternalAgentConfigMigrationItem>& migrationItems, const ImportExternalAgentConfigParams& params);
Call<ExternalAgentConfigImportHistoriesReadResponse> readExternalAgentConfigImportHistories();

/// The params of the first page of a walk.
ListModelsParams firstPage(const ListAllModelsParams& params);
ListPermissionProfilesParams firstPage(const ListAllPermissionProfilesParams& params);

}  // namespace ormel::detail::calls
