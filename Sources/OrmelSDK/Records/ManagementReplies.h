#pragma once

/// The replies of the management calls by name. A program that uses a call includes the header of its reply besides.
namespace ormel {

// OrmelSDK/Records/ThreadRecords.h
struct ConversationSummaryResponse;
struct ThreadForkResponse;
struct ThreadGoalClearResponse;
struct ThreadGoalGetResponse;
struct ThreadGoalSetResponse;
struct ThreadListResponse;
struct ThreadReadResponse;
struct ThreadUnsubscribeResponse;

// OrmelSDK/Records/ThreadTurnRecords.h
struct ReviewStartResponse;
struct ThreadTurnItemsListResponse;
struct ThreadTurnsListResponse;

// OrmelSDK/Records/EmptyResponses.h
struct ThreadSettingsUpdateResponse;

}  // namespace ormel
