#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Input/ApprovalModeTables.h"
#include "OrmelSDK/Input/ThreadChoicesTables.h"
#include "OrmelSDK/Records/ThreadGoalTables.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "OrmelSDK/Records/ThreadTurnRecordsTables.h"

template <>
struct ormel::coding::RecordTable<ormel::OrmelThreadStatus> {
  static constexpr auto fields =
      std::tuple(required<&OrmelThreadStatus::type>("type"), defaulted<&OrmelThreadStatus::activeFlags>("activeFlags"));
};
ORMEL_DECLARE_CODEC(OrmelThreadStatus)

template <>
struct ormel::coding::RecordTable<ormel::OrmelThreadGitInfo> {
  static constexpr auto fields =
      std::tuple(optional<&OrmelThreadGitInfo::sha>("sha"), optional<&OrmelThreadGitInfo::branch>("branch"),
                 optional<&OrmelThreadGitInfo::originURL>("originUrl"));
};
ORMEL_DECLARE_CODEC(OrmelThreadGitInfo)

template <>
struct ormel::coding::RecordTable<ormel::OrmelThreadRecord> {
  static constexpr auto fields = std::tuple(
      required<&OrmelThreadRecord::id>("id"), defaulted<&OrmelThreadRecord::sessionID>("sessionId"),
      optional<&OrmelThreadRecord::forkedFromID>("forkedFromId"),
      optional<&OrmelThreadRecord::parentThreadID>("parentThreadId"), defaulted<&OrmelThreadRecord::preview>("preview"),
      defaulted<&OrmelThreadRecord::ephemeral>("ephemeral"),
      defaulted<&OrmelThreadRecord::modelProvider>("modelProvider"),
      defaulted<&OrmelThreadRecord::createdAt>("createdAt"), defaulted<&OrmelThreadRecord::updatedAt>("updatedAt"),
      optional<&OrmelThreadRecord::recencyAt>("recencyAt"), defaulted<&OrmelThreadRecord::status>("status"),
      optional<&OrmelThreadRecord::path>("path"), defaulted<&OrmelThreadRecord::cwd>("cwd"),
      defaulted<&OrmelThreadRecord::cliVersion>("cliVersion"), optional<&OrmelThreadRecord::source>("source"),
      optional<&OrmelThreadRecord::threadSource>("threadSource"),
      optional<&OrmelThreadRecord::agentNickname>("agentNickname"),
      optional<&OrmelThreadRecord::agentRole>("agentRole"), optional<&OrmelThreadRecord::gitInfo>("gitInfo"),
      optional<&OrmelThreadRecord::name>("name"), defaulted<&OrmelThreadRecord::turns>("turns"));
};
ORMEL_DECLARE_CODEC(OrmelThreadRecord)

template <>
struct ormel::coding::RecordTable<ormel::ThreadListResponse> {
  static constexpr auto fields =
      std::tuple(required<&ThreadListResponse::data>("data"), optional<&ThreadListResponse::nextCursor>("nextCursor"),
                 optional<&ThreadListResponse::backwardsCursor>("backwardsCursor"));
};
ORMEL_DECLARE_CODEC(ThreadListResponse)

template <>
struct ormel::coding::RecordTable<ormel::ThreadReadResponse> {
  static constexpr auto fields = std::tuple(required<&ThreadReadResponse::thread>("thread"));
};
ORMEL_DECLARE_CODEC(ThreadReadResponse)

template <>
struct ormel::coding::RecordTable<ormel::ThreadForkResponse> {
  static constexpr auto fields =
      std::tuple(required<&ThreadForkResponse::thread>("thread"), required<&ThreadForkResponse::model>("model"),
                 required<&ThreadForkResponse::modelProvider>("modelProvider"),
                 optional<&ThreadForkResponse::serviceTier>("serviceTier"), required<&ThreadForkResponse::cwd>("cwd"),
                 required<&ThreadForkResponse::instructionSources>("instructionSources"),
                 optional<&ThreadForkResponse::approvalPolicy>("approvalPolicy"),
                 optional<&ThreadForkResponse::approvalsReviewer>("approvalsReviewer"),
                 optional<&ThreadForkResponse::sandbox>("sandbox"),
                 optional<&ThreadForkResponse::reasoningEffort>("reasoningEffort"));
};
ORMEL_DECLARE_CODEC(ThreadForkResponse)

template <>
struct ormel::coding::RecordTable<ormel::ThreadUnsubscribeResponse> {
  static constexpr auto fields = std::tuple(required<&ThreadUnsubscribeResponse::status>("status"));
};
ORMEL_DECLARE_CODEC(ThreadUnsubscribeResponse)

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalSetResponse> {
  static constexpr auto fields = std::tuple(required<&ThreadGoalSetResponse::goal>("goal"));
};
ORMEL_DECLARE_CODEC(ThreadGoalSetResponse)

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalGetResponse> {
  static constexpr auto fields = std::tuple(optional<&ThreadGoalGetResponse::goal>("goal"));
};
ORMEL_DECLARE_CODEC(ThreadGoalGetResponse)

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalClearResponse> {
  static constexpr auto fields = std::tuple(required<&ThreadGoalClearResponse::cleared>("cleared"));
};
ORMEL_DECLARE_CODEC(ThreadGoalClearResponse)

template <>
struct ormel::coding::RecordTable<ormel::ConversationSummaryResponse> {
  static constexpr auto fields = std::tuple(required<&ConversationSummaryResponse::summary>("summary"));
};
ORMEL_DECLARE_CODEC(ConversationSummaryResponse)
