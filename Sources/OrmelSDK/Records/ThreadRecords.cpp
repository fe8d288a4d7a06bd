#include "OrmelSDK/Records/ThreadRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::OrmelThreadStatus> {
  static constexpr Field fields[] = {
      required<&OrmelThreadStatus::type>("type"),
      defaulted<&OrmelThreadStatus::activeFlags>("activeFlags"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::OrmelThreadGitInfo> {
  static constexpr Field fields[] = {
      optional<&OrmelThreadGitInfo::sha>("sha"),
      optional<&OrmelThreadGitInfo::branch>("branch"),
      optional<&OrmelThreadGitInfo::originURL>("originUrl"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::OrmelThreadRecord> {
  static constexpr Field fields[] = {
      required<&OrmelThreadRecord::id>("id"),
      defaulted<&OrmelThreadRecord::sessionID>("sessionId"),
      optional<&OrmelThreadRecord::forkedFromID>("forkedFromId"),
      optional<&OrmelThreadRecord::parentThreadID>("parentThreadId"),
      defaulted<&OrmelThreadRecord::preview>("preview"),
      defaulted<&OrmelThreadRecord::ephemeral>("ephemeral"),
      defaulted<&OrmelThreadRecord::modelProvider>("modelProvider"),
      defaulted<&OrmelThreadRecord::createdAt>("createdAt"),
      defaulted<&OrmelThreadRecord::updatedAt>("updatedAt"),
      optional<&OrmelThreadRecord::recencyAt>("recencyAt"),
      defaulted<&OrmelThreadRecord::status>("status"),
      optional<&OrmelThreadRecord::path>("path"),
      defaulted<&OrmelThreadRecord::cwd>("cwd"),
      defaulted<&OrmelThreadRecord::cliVersion>("cliVersion"),
      optional<&OrmelThreadRecord::source>("source"),
      optional<&OrmelThreadRecord::threadSource>("threadSource"),
      optional<&OrmelThreadRecord::agentNickname>("agentNickname"),
      optional<&OrmelThreadRecord::agentRole>("agentRole"),
      optional<&OrmelThreadRecord::gitInfo>("gitInfo"),
      optional<&OrmelThreadRecord::name>("name"),
      defaulted<&OrmelThreadRecord::turns>("turns"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadListResponse> {
  static constexpr Field fields[] = {
      required<&ThreadListResponse::data>("data"),
      optional<&ThreadListResponse::nextCursor>("nextCursor"),
      optional<&ThreadListResponse::backwardsCursor>("backwardsCursor"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadReadResponse> {
  static constexpr Field fields[] = {
      required<&ThreadReadResponse::thread>("thread"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadForkResponse> {
  static constexpr Field fields[] = {
      required<&ThreadForkResponse::thread>("thread"),
      required<&ThreadForkResponse::model>("model"),
      required<&ThreadForkResponse::modelProvider>("modelProvider"),
      optional<&ThreadForkResponse::serviceTier>("serviceTier"),
      required<&ThreadForkResponse::cwd>("cwd"),
      required<&ThreadForkResponse::instructionSources>("instructionSources"),
      optional<&ThreadForkResponse::approvalPolicy>("approvalPolicy"),
      optional<&ThreadForkResponse::approvalsReviewer>("approvalsReviewer"),
      optional<&ThreadForkResponse::sandbox>("sandbox"),
      optional<&ThreadForkResponse::reasoningEffort>("reasoningEffort"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadUnsubscribeResponse> {
  static constexpr Field fields[] = {
      required<&ThreadUnsubscribeResponse::status>("status"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalSetResponse> {
  static constexpr Field fields[] = {
      required<&ThreadGoalSetResponse::goal>("goal"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalGetResponse> {
  static constexpr Field fields[] = {
      optional<&ThreadGoalGetResponse::goal>("goal"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalClearResponse> {
  static constexpr Field fields[] = {
      required<&ThreadGoalClearResponse::cleared>("cleared"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ConversationSummaryResponse> {
  static constexpr Field fields[] = {
      required<&ConversationSummaryResponse::summary>("summary"),
  };
};

ORMEL_DEFINE_RECORD(OrmelThreadStatus)
ORMEL_DEFINE_RECORD(OrmelThreadGitInfo)
ORMEL_DEFINE_RECORD(OrmelThreadRecord)
ORMEL_DEFINE_RECORD(ThreadListResponse)
ORMEL_DEFINE_RECORD(ThreadReadResponse)
ORMEL_DEFINE_RECORD(ThreadForkResponse)
ORMEL_DEFINE_RECORD(ThreadUnsubscribeResponse)
ORMEL_DEFINE_RECORD(ThreadGoalSetResponse)
ORMEL_DEFINE_RECORD(ThreadGoalGetResponse)
ORMEL_DEFINE_RECORD(ThreadGoalClearResponse)
ORMEL_DEFINE_RECORD(ConversationSummaryResponse)
