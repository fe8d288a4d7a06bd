#include "OrmelSDK/Management/ConfigCalls.h"

#include "OrmelSDK/Coding/ParamsTable.h"

namespace ormel::detail::calls {

Call<ConfigReadResponse> readConfig(const ReadConfigParams& params) {
  return {"config/read", coding::encodeParams(params)};
}

Call<ConfigRequirementsReadResponse> readConfigRequirements() { return {"configRequirements/read", withoutParams}; }

DroppedCall<ConfigWriteAck> writeConfigValue(const std::string& keyPath, const JSONValue& value,
                                             ConfigMergeStrategy mergeStrategy, const WriteConfigValueParams& params) {
  return {{"config/value/write",
           callParams({{"keyPath", keyPath}, {"value", value}, {"mergeStrategy", rawValue(mergeStrategy)}}, params)}};
}

Call<ConfigBatchWriteResponse> batchWriteConfig(const std::vector<ConfigEdit>& edits,
                                                const BatchWriteConfigParams& params) {
  return {"config/batchWrite", callParams({{"edits", argument(edits)}}, params)};
}

Call<ConfigBatchWriteResponse> setHookEnabled(const std::string& key, bool enabled) {
  ConfigEdit edit;
  edit.keyPath = "hooks.state";
  edit.value = JSONValue::object({{key, JSONValue::object({{"enabled", enabled}})}});
  edit.mergeStrategy = ConfigMergeStrategy::upsert;
  BatchWriteConfigParams params;
  params.reloadUserConfig = true;
  return batchWriteConfig({edit}, params);
}

Call<ModelListResponse> listModels(const ListModelsParams& params) {
  return {"model/list", coding::encodeParams(params)};
}

Call<ModelProviderCapabilitiesReadResponse> readModelProviderCapabilities() {
  return {"modelProvider/capabilities/read", callParams({})};
}

Call<PermissionProfileListResponse> listPermissionProfiles(const ListPermissionProfilesParams& params) {
  return {"permissionProfile/list", coding::encodeParams(params)};
}

Call<ExperimentalFeatureListResponse> listExperimentalFeatures(const ListExperimentalFeaturesParams& params) {
  return {"experimentalFeature/list", coding::encodeParams(params)};
}

Call<ExperimentalFeatureEnablementSetResponse> setExperimentalFeatureEnablement(
    const std::map<std::string, bool>& enablement) {
  return {"experimentalFeature/enablement/set", callParams({{"enablement", argument(enablement)}})};
}

Call<SkillsListResponse> listSkills(const ListSkillsParams& params) {
  return {"skills/list", coding::encodeParams(params)};
}

DroppedCall<ConfigWriteAck> writeSkillConfig(bool enabled, const WriteSkillConfigParams& params) {
  return {{"skills/config/write", callParams({{"enabled", enabled}}, params)}};
}

NotificationCall setSkillExtraRoots(const std::vector<std::string>& extraRoots) {
  return {"skills/extraRoots/set", callParams({{"extraRoots", argument(extraRoots)}})};
}

Call<HooksListResponse> listHooks(const ListHooksParams& params) {
  return {"hooks/list", coding::encodeParams(params)};
}

Call<HooksListResponse> listHooks(const std::vector<std::string>& cwds) {
  return {"hooks/list", callParams({{"cwds", argument(cwds)}})};
}

Call<ExternalAgentConfigDetectResponse> detectExternalAgentConfig(const DetectExternalAgentConfigParams& params) {
  return {"externalAgentConfig/detect", coding::encodeParams(params)};
}

Call<ExternalAgentConfigImportResponse> importExternalAgentConfig(
    const std::vector<ExternalAgentConfigMigrationItem>& migrationItems,
    const ImportExternalAgentConfigParams& params) {
  return {"externalAgentConfig/import", callParams({{"migrationItems", argument(migrationItems)}}, params)};
}

Call<ExternalAgentConfigImportHistoriesReadResponse> readExternalAgentConfigImportHistories() {
  return {"externalAgentConfig/import/readHistories", withoutParams};
}

ListModelsParams firstPage(const ListAllModelsParams& params) {
  ListModelsParams page;
  page.includeHidden = params.includeHidden;
  return page;
}

ListPermissionProfilesParams firstPage(const ListAllPermissionProfilesParams& params) {
  ListPermissionProfilesParams page;
  page.cwd = params.cwd;
  return page;
}

}  // namespace ormel::detail::calls
