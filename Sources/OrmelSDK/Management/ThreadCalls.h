#pragma once

#include <memory>
#include <string>
#include <vector>

#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Management/Call.h"
#include "OrmelSDK/Management/ThreadParams.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"

/// The calls that manage threads, by the names of the operations that perform them.
namespace ormel::detail::calls {

Call<ThreadListResponse> listThreads(const ListThreadsParams& params);
Call<ThreadListResponse> listLoadedThreads(const ListLoadedThreadsParams& params);
Call<ThreadReadResponse> readThread(const std::string& threadID, const ReadThreadParams& params);
Call<ThreadForkResponse> forkThread(const std::string& threadID, const ForkThreadParams& params);
Call<ThreadForkResponse> forkThread(const std::string& threadID, const ForkThreadInSessionParams& params);
DroppedCall<EmptyRPCResponse> archiveThread(const std::string& threadID);
DroppedCall<EmptyRPCResponse> deleteThread(const std::string& threadID);
Call<ThreadReadResponse> unarchiveThread(const std::string& threadID);
Call<ThreadUnsubscribeResponse> unsubscribeThread(const std::string& threadID);
DroppedCall<EmptyRPCResponse> setThreadName(const std::string& threadID, const std::string& name);
DroppedCall<EmptyRPCResponse> compactThread(const std::string& threadID);
DroppedCall<EmptyRPCResponse> runThreadShellCommand(const std::string& threadID, const std::string& command);
DroppedCall<EmptyRPCResponse> approveGuardianDeniedAction(const std::string& threadID, const JSONValue& event);
Call<ThreadReadResponse> updateThreadMetadata(const std::string& threadID, const UpdateThreadMetadataParams& params);
Call<ThreadSettingsUpdateResponse> updateThreadSettings(const std::string& threadID,
                                                        const UpdateThreadSettingsParams& params);
DroppedCall<ConfigWriteAck> injectThreadItems(const std::string& threadID, const std::vector<JSONValue>& items);
Call<ThreadTurnsListResponse> listThreadTurns(const std::string& threadID, const ListThreadTurnsParams& params);
Call<ThreadTurnItemsListResponse> listThreadTurnItems(const std::string& threadID, const std::string& turnID,
                                                      const ListThreadTurnItemsParams& params);
/// The older name of the call, whose items come bare. Its params are the same.
Call<LegacyThreadTurnItemsListResponse> listLegacyThreadTurnItems(const std::string& threadID,
                                                                  const std::string& turnID,
                                                                  const ListThreadTurnItemsParams& params);
Call<ThreadGoalSetResponse> setThreadGoal(const std::string& threadID, const SetThreadGoalParams& params);
Call<ThreadGoalGetResponse> readThreadGoal(const std::string& threadID);
Call<ThreadGoalClearResponse> clearThreadGoal(const std::string& threadID);
Call<ReviewStartResponse> startReview(const std::string& threadID, const ReviewTarget& target,
                                      const StartReviewParams& params);
Call<ConversationSummaryResponse> getConversationSummary(const GetConversationSummaryParams& params);

}  // namespace ormel::detail::calls
