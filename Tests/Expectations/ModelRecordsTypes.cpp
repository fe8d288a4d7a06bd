#include "Expectations/Registry.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PermissionRecords.h"

namespace ormel::tests {

void registerModelRecords(Registry& registry) {
  registry.vocabulary<ModelInputModality>(
      {{"text", ModelInputModality::text}, {"image", ModelInputModality::image}, {"audio", ModelInputModality::audio}});
  registry.vocabulary<ModelMultiAgentVersion>({{"disabled", ModelMultiAgentVersion::disabled}});
  registry.enumeration<RemoteControlConnectionStatus>();
  registry.enumeration<WindowsSandboxReadiness>();
  registry.enumeration<DeviceKeyAlgorithm>();
  registry.enumeration<DeviceKeyProtectionClass>();
  registry.record<PermissionProfileSummary>();
  registry.record<PermissionProfileListResponse>();
  registry.record<ModelProviderCapabilitiesReadResponse>();
  registry.record<ReasoningEffortOption>();
  registry.record<ModelAvailabilityNux>();
  registry.record<ModelServiceTier>();
  registry.record<ModelUpgradeInfo>();
  registry.record<OrmelModelDescriptor>();
  registry.record<ModelListResponse>();
  registry.record<RemoteControlStatusResponse>();
  registry.record<WindowsSandboxReadinessResponse>();
  registry.record<AttestationGenerateResponse>();
  registry.record<DeviceKeyCreateResponse>();
  registry.record<DeviceKeySignResponse>();
  registry.record<EnvironmentAddResponse>();
}

}  // namespace ormel::tests
