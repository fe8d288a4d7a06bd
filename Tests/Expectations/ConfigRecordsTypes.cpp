#include "Expectations/Registry.h"
#include "OrmelSDK/Records/ConfigRecords.h"

namespace ormel::tests {

void registerConfigRecords(Registry& registry) {
  registry.enumeration<ConfigMergeStrategy>();
  registry.enumeration<ResidencyRequirement>();
  registry.enumeration<NetworkDomainPermission>();
  registry.enumeration<NetworkUnixSocketPermission>();
  registry.special<AppsConfigSnapshot>();
  registry.record<ConfigReadResponse>();
  registry.record<EffectiveOrmelConfig>();
  registry.record<PluginEnabledConfig>();
  registry.record<AppConfigSnapshot>();
  registry.record<SkillsConfigSnapshot>();
  registry.record<SkillConfigSnapshot>();
  registry.record<ConfigEdit>();
  registry.record<ConfigBatchWriteResponse>();
  registry.record<ConfigRequirementsReadResponse>();
  registry.record<ConfigRequirements>();
  registry.record<ComputerUseRequirements>();
  registry.record<NetworkRequirements>();
}

}  // namespace ormel::tests
