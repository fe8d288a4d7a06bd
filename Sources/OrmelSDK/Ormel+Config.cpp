#include <utility>

#include "OrmelSDK/Management/ConfigCalls.h"
#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Ormel.h"

namespace ormel {

namespace calls = detail::calls;

Task<ConfigReadResponse> Ormel::readConfig(const ReadConfigParams& params) const {
  return detail::perform(performer(), calls::readConfig(params));
}

Task<ConfigRequirementsReadResponse> Ormel::readConfigRequirements() const {
  return detail::perform(performer(), calls::readConfigRequirements());
}

Task<void> Ormel::writeConfigValue(const std::string& keyPath, const JSONValue& value,
                                   ConfigMergeStrategy mergeStrategy, const WriteConfigValueParams& params) const {
  return detail::perform(performer(), calls::writeConfigValue(keyPath, value, mergeStrategy, params));
}

Task<ConfigBatchWriteResponse> Ormel::batchWriteConfig(const std::vector<ConfigEdit>& edits,
                                                       const BatchWriteConfigParams& params) const {
  return detail::perform(performer(), calls::batchWriteConfig(edits, params));
}

Task<ModelListResponse> Ormel::listModels(const ListModelsParams& params) const {
  return detail::perform(performer(), calls::listModels(params));
}

Task<ModelProviderCapabilitiesReadResponse> Ormel::readModelProviderCapabilities() const {
  return detail::perform(performer(), calls::readModelProviderCapabilities());
}

Task<PermissionProfileListResponse> Ormel::listPermissionProfiles(const ListPermissionProfilesParams& params) const {
  return detail::perform(performer(), calls::listPermissionProfiles(params));
}

Task<ExperimentalFeatureListResponse> Ormel::listExperimentalFeatures(
    const ListExperimentalFeaturesParams& params) const {
  return detail::perform(performer(), calls::listExperimentalFeatures(params));
}

Task<ExperimentalFeatureEnablementSetResponse> Ormel::setExperimentalFeatureEnablement(
    const std::map<std::string, bool>& enablement) const {
  return detail::perform(performer(), calls::setExperimentalFeatureEnablement(enablement));
}

Task<SkillsListResponse> Ormel::listSkills(const ListSkillsParams& params) const {
  return detail::perform(performer(), calls::listSkills(params));
}

Task<void> Ormel::writeSkillConfig(bool enabled, const WriteSkillConfigParams& params) const {
  return detail::perform(performer(), calls::writeSkillConfig(enabled, params));
}

Task<void> Ormel::setSkillExtraRoots(const std::vector<std::string>& extraRoots) const {
  auto call = calls::setSkillExtraRoots(extraRoots);
  return performNotification(std::string(call.method), std::move(call.params));
}

Task<HooksListResponse> Ormel::listHooks(const ListHooksParams& params) const {
  return detail::perform(performer(), calls::listHooks(params));
}

Task<ExternalAgentConfigDetectResponse> Ormel::detectExternalAgentConfig(
    const DetectExternalAgentConfigParams& params) const {
  return detail::perform(performer(), calls::detectExternalAgentConfig(params));
}

Task<ExternalAgentConfigImportResponse> Ormel::importExternalAgentConfig(
    const std::vector<ExternalAgentConfigMigrationItem>& migrationItems,
    const ImportExternalAgentConfigParams& params) const {
  return detail::perform(performer(), calls::importExternalAgentConfig(migrationItems, params));
}

Task<ExternalAgentConfigImportHistoriesReadResponse> Ormel::readExternalAgentConfigImportHistories() const {
  return detail::perform(performer(), calls::readExternalAgentConfigImportHistories());
}

}  // namespace ormel
