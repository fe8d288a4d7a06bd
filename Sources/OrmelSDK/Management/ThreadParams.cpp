#include "OrmelSDK/Management/ThreadParams.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/ParamsTable.h"
#include "OrmelSDK/Management/ArgumentWriters.h"
#include "OrmelSDK/Records/ThreadGoal.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadSortKey> {
  static constexpr auto rule = closed;
  static constexpr Word<ThreadSortKey> words[] = {
      {ThreadSortKey::createdAt, "created_at"},
      {ThreadSortKey::updatedAt, "updated_at"},
      {ThreadSortKey::recencyAt, "recency_at"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadSortDirection> {
  static constexpr auto rule = closed;
  static constexpr Word<ThreadSortDirection> words[] = {
      {ThreadSortDirection::asc, "asc"},
      {ThreadSortDirection::desc, "desc"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadTurnSortDirection> {
  static constexpr auto rule = closed;
  static constexpr Word<ThreadTurnSortDirection> words[] = {
      {ThreadTurnSortDirection::asc, "asc"},
      {ThreadTurnSortDirection::desc, "desc"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadSourceKind> {
  static constexpr auto rule = closed;
  static constexpr Word<ThreadSourceKind> words[] = {
      {ThreadSourceKind::cli, "cli"},
      {ThreadSourceKind::vscode, "vscode"},
      {ThreadSourceKind::exec, "exec"},
      {ThreadSourceKind::appServer, "appServer"},
      {ThreadSourceKind::subAgent, "subAgent"},
      {ThreadSourceKind::subAgentReview, "subAgentReview"},
      {ThreadSourceKind::subAgentCompact, "subAgentCompact"},
      {ThreadSourceKind::subAgentThreadSpawn, "subAgentThreadSpawn"},
      {ThreadSourceKind::subAgentOther, "subAgentOther"},
      {ThreadSourceKind::unknown, "unknown"},
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ThreadMetadataGitInfoUpdate> {
  using P = ThreadMetadataGitInfoUpdate;
  static constexpr Field fields[] = {
      triState<&P::branch>("branch"),
      triState<&P::sha>("sha"),
      triState<&P::originURL>("originUrl"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListThreadsParams> {
  using P = ListThreadsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
      ifGiven<&P::sortKey>("sortKey"),
      ifGiven<&P::sortDirection>("sortDirection"),
      ifGiven<&P::modelProviders>("modelProviders"),
      ifGiven<&P::sourceKinds>("sourceKinds"),
      ifGiven<&P::archived>("archived"),
      ifGiven<&P::cwd>("cwd"),
      ifGiven<&P::useStateDBOnly>("useStateDbOnly"),
      ifGiven<&P::searchTerm>("searchTerm"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListLoadedThreadsParams> {
  using P = ListLoadedThreadsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ReadThreadParams> {
  static constexpr Field fields[] = {
      always<&ReadThreadParams::includeTurns>("includeTurns"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ForkThreadParams> {
  using P = ForkThreadParams;
  static constexpr Field fields[] = {
      ifGiven<&P::lastTurnID>("lastTurnId"),
      ifGiven<&P::model>("model"),
      ifGiven<&P::modelProvider>("modelProvider"),
      ifGiven<&P::serviceTier>("serviceTier"),
      ifGiven<&P::workingDirectory>("cwd"),
      ifGiven<&P::approvalPolicy>("approvalPolicy").codedBy<detail::ApprovalPolicyWriter>(),
      ifGiven<&P::approvalsReviewer>("approvalsReviewer"),
      ifGiven<&P::sandboxMode>("sandbox"),
      ifGiven<&P::config>("config").codedBy<detail::ConfigWriter>(),
      ifGiven<&P::baseInstructions>("baseInstructions"),
      ifGiven<&P::developerInstructions>("developerInstructions"),
      ifGiven<&P::ephemeral>("ephemeral"),
      ifGiven<&P::threadSource>("threadSource"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ForkThreadInSessionParams> {
  using P = ForkThreadInSessionParams;
  static constexpr Field fields[] = {
      ifGiven<&P::lastTurnID>("lastTurnId"),
      ifGiven<&P::ephemeral>("ephemeral"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::UpdateThreadMetadataParams> {
  static constexpr Field fields[] = {
      ifGiven<&UpdateThreadMetadataParams::gitInfo>("gitInfo"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::UpdateThreadSettingsParams> {
  using P = UpdateThreadSettingsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::workingDirectory>("cwd"),
      ifGiven<&P::approvalPolicy>("approvalPolicy").codedBy<detail::ApprovalPolicyWriter>(),
      ifGiven<&P::approvalsReviewer>("approvalsReviewer"),
      ifGiven<&P::sandboxPolicy>("sandboxPolicy"),
      ifGiven<&P::permissions>("permissions"),
      ifGiven<&P::model>("model"),
      triState<&P::serviceTier>("serviceTier"),
      ifGiven<&P::modelReasoningEffort>("effort"),
      ifGiven<&P::modelReasoningSummary>("summary"),
      ifGiven<&P::collaborationMode>("collaborationMode"),
      ifGiven<&P::personality>("personality"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListThreadTurnsParams> {
  using P = ListThreadTurnsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
      ifGiven<&P::sortDirection>("sortDirection"),
      ifGiven<&P::itemsView>("itemsView"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListThreadTurnItemsParams> {
  using P = ListThreadTurnItemsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
      ifGiven<&P::sortDirection>("sortDirection"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::SetThreadGoalParams> {
  using P = SetThreadGoalParams;
  static constexpr Field fields[] = {
      ifGiven<&P::objective>("objective"),
      ifGiven<&P::status>("status"),
      triState<&P::tokenBudget>("tokenBudget"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::StartReviewParams> {
  static constexpr Field fields[] = {
      ifGiven<&StartReviewParams::delivery>("delivery"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::GetConversationSummaryParams> {
  using P = GetConversationSummaryParams;
  static constexpr Field fields[] = {
      ifGiven<&P::conversationID>("conversationId"),
      ifGiven<&P::rolloutPath>("rolloutPath"),
  };
};

ORMEL_DEFINE_ENUMERATION(ThreadSortKey)
ORMEL_DEFINE_ENUMERATION(ThreadSortDirection)
ORMEL_DEFINE_ENUMERATION(ThreadTurnSortDirection)
ORMEL_DEFINE_ENUMERATION(ThreadSourceKind)
ORMEL_DEFINE_EQUALITY(ThreadMetadataGitInfoUpdate)
ORMEL_DEFINE_PARAMS(ThreadMetadataGitInfoUpdate)
ORMEL_DEFINE_PARAMS(ListThreadsParams)
ORMEL_DEFINE_PARAMS(ListLoadedThreadsParams)
ORMEL_DEFINE_PARAMS(ReadThreadParams)
ORMEL_DEFINE_PARAMS(ForkThreadParams)
ORMEL_DEFINE_PARAMS(ForkThreadInSessionParams)
ORMEL_DEFINE_PARAMS(UpdateThreadMetadataParams)
ORMEL_DEFINE_PARAMS(UpdateThreadSettingsParams)
ORMEL_DEFINE_PARAMS(ListThreadTurnsParams)
ORMEL_DEFINE_PARAMS(ListThreadTurnItemsParams)
ORMEL_DEFINE_PARAMS(SetThreadGoalParams)
ORMEL_DEFINE_PARAMS(StartReviewParams)
ORMEL_DEFINE_PARAMS(GetConversationSummaryParams)
