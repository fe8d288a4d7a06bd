#include "Expectations/Registry.h"
#include "OrmelSDK/Handlers/ApprovalDecision.h"
#include "OrmelSDK/Handlers/ApprovalRequests.h"
#include "OrmelSDK/Handlers/Elicitation.h"
#include "OrmelSDK/Handlers/ParlaneAuthTokens.h"
#include "OrmelSDK/Handlers/PermissionProfile.h"

namespace ormel::tests {

void registerHandlers(Registry& registry) {
  registry.record<RequestPermissionProfile>();
  registry.record<GrantedPermissionProfile>();
  registry.enumeration<PermissionGrantScope>();
  registry.enumeration<McpServerElicitationAction>();
  registry.enumeration<ParlaneAuthTokensRefreshReason>();
  registry.vocabulary<CommandApprovalKind>(
      {{"command", CommandApprovalKind::command}, {"writeStdin", CommandApprovalKind::writeStdin}});
  registry.special<OrmelApprovalDecision>();
}

}  // namespace ormel::tests
