#include "Expectations/Registry.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ThreadGoal.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "OrmelSDK/Records/ThreadSettings.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"

namespace ormel::tests {

void registerRecords(Registry& registry) {
  registry.enumeration<ThreadGoalStatus>();
  registry.record<ThreadGoal>();
  registry.record<ActivePermissionProfile>();
  registry.record<ThreadSettings>();
  registry.record<EmptyRPCResponse>();
  registry.record<ConfigWriteAck>();
  registry.record<ThreadSettingsUpdateResponse>();
  registry.enumeration<ThreadTurnStatus>();
  registry.enumeration<ThreadTurnItemsView>();
  registry.record<OrmelThreadStatus>();
  registry.record<OrmelThreadGitInfo>();
  registry.record<OrmelThreadRecord>();
  registry.record<ThreadListResponse>();
  registry.record<ThreadReadResponse>();
  registry.record<ThreadForkResponse>();
  registry.record<ThreadUnsubscribeResponse>();
  registry.record<ThreadTurnError>();
  registry.record<ThreadTurn>();
  registry.record<ThreadItemEntry>();
  registry.record<ThreadTurnItemsListResponse>();
  registry.record<LegacyThreadTurnItemsListResponse>();
  registry.record<ThreadTurnsListResponse>();
  registry.record<ThreadGoalSetResponse>();
  registry.record<ThreadGoalGetResponse>();
  registry.record<ThreadGoalClearResponse>();
  registry.record<ReviewStartResponse>();
  registry.record<ConversationSummaryResponse>();
}

}  // namespace ormel::tests
