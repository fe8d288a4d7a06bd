#include "OrmelSDK/Records/ThreadTurnRecords.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadTurnStatus> {
  static constexpr auto rule = tolerant(ThreadTurnStatus::unknown);
  static constexpr Word<ThreadTurnStatus> words[] = {
      {ThreadTurnStatus::completed, "completed"}, {ThreadTurnStatus::interrupted, "interrupted"},
      {ThreadTurnStatus::failed, "failed"},       {ThreadTurnStatus::inProgress, "inProgress"},
      {ThreadTurnStatus::unknown, "unknown"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadTurnItemsView> {
  static constexpr auto rule = closed;
  static constexpr Word<ThreadTurnItemsView> words[] = {
      {ThreadTurnItemsView::notLoaded, "notLoaded"},
      {ThreadTurnItemsView::summary, "summary"},
      {ThreadTurnItemsView::full, "full"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadTurnError> {
  static constexpr Field fields[] = {
      required<&ThreadTurnError::message>("message"),
      optional<&ThreadTurnError::ormelErrorInfo>("ormelErrorInfo"),
      optional<&ThreadTurnError::additionalDetails>("additionalDetails"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadTurn> {
  static constexpr Field fields[] = {
      required<&ThreadTurn::id>("id"),
      defaulted<&ThreadTurn::items>("items"),
      defaulted<&ThreadTurn::itemsView>("itemsView"),
      required<&ThreadTurn::status>("status"),
      optional<&ThreadTurn::error>("error"),
      optional<&ThreadTurn::startedAt>("startedAt"),
      optional<&ThreadTurn::completedAt>("completedAt"),
      optional<&ThreadTurn::durationMilliseconds>("durationMs", "duration_ms"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadItemEntry> {
  static constexpr Field fields[] = {
      required<&ThreadItemEntry::turnID>("turnId"),
      required<&ThreadItemEntry::item>("item"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadTurnItemsListResponse> {
  static constexpr Field fields[] = {
      required<&ThreadTurnItemsListResponse::data>("data"),
      optional<&ThreadTurnItemsListResponse::nextCursor>("nextCursor"),
      optional<&ThreadTurnItemsListResponse::backwardsCursor>("backwardsCursor"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::LegacyThreadTurnItemsListResponse> {
  static constexpr Field fields[] = {
      required<&LegacyThreadTurnItemsListResponse::data>("data"),
      optional<&LegacyThreadTurnItemsListResponse::nextCursor>("nextCursor"),
      optional<&LegacyThreadTurnItemsListResponse::backwardsCursor>("backwardsCursor"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadTurnsListResponse> {
  static constexpr Field fields[] = {
      required<&ThreadTurnsListResponse::data>("data"),
      optional<&ThreadTurnsListResponse::nextCursor>("nextCursor"),
      optional<&ThreadTurnsListResponse::backwardsCursor>("backwardsCursor"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ReviewStartResponse> {
  static constexpr Field fields[] = {
      required<&ReviewStartResponse::turn>("turn"),
      required<&ReviewStartResponse::reviewThreadID>("reviewThreadId"),
  };
};

ORMEL_DEFINE_ENUMERATION(ThreadTurnStatus)
ORMEL_DEFINE_ENUMERATION(ThreadTurnItemsView)
ORMEL_DEFINE_RECORD(ThreadTurnError)
ORMEL_DEFINE_RECORD(ThreadTurn)
ORMEL_DEFINE_RECORD(ThreadItemEntry)
ORMEL_DEFINE_RECORD(ThreadTurnItemsListResponse)
ORMEL_DEFINE_RECORD(LegacyThreadTurnItemsListResponse)
ORMEL_DEFINE_RECORD(ThreadTurnsListResponse)
ORMEL_DEFINE_RECORD(ReviewStartResponse)
