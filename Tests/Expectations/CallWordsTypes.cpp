#include "Expectations/Registry.h"
#include "OrmelSDK/Management/AccountParams.h"
#include "OrmelSDK/Management/AppParams.h"
#include "OrmelSDK/Management/CommandParams.h"

namespace ormel::tests {

void registerCallWords(Registry& registry) {
  registry.enumeration<AccountLoginAppBrand>();
  registry.enumeration<AccountAddCreditsNudgeType>();
  registry.enumeration<DeviceKeyProtectionPolicy>();
  registry.enumeration<McpServerStatusDetail>();
  registry.enumeration<WindowsSandboxSetupMode>();
}

}  // namespace ormel::tests
