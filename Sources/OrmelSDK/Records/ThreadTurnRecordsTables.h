#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Items/ThreadItemTables.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadTurnStatus> {
  static constexpr auto words = tolerant(
      ThreadTurnStatus::unknown,
      std::array{Word{ThreadTurnStatus::completed, "completed"}, Word{ThreadTurnStatus::interrupted, "interrupted"},
                 Word{ThreadTurnStatus::failed, "failed"}, Word{ThreadTurnStatus::inProgress, "inProgress"},
                 Word{ThreadTurnStatus::unknown, "unknown"}});
};
ORMEL_DECLARE_ENUMERATION(ThreadTurnStatus)

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadTurnItemsView> {
  static constexpr auto words =
      closed(std::array{Word{ThreadTurnItemsView::notLoaded, "notLoaded"},
                        Word{ThreadTurnItemsView::summary, "summary"}, Word{ThreadTurnItemsView::full, "full"}});
};
ORMEL_DECLARE_ENUMERATION(ThreadTurnItemsView)

template <>
struct ormel::coding::RecordTable<ormel::ThreadTurnError> {
  static constexpr auto fields = std::tuple(required<&ThreadTurnError::message>("message"),
                                            optional<&ThreadTurnError::ormelErrorInfo>("ormelErrorInfo"),
                                            optional<&ThreadTurnError::additionalDetails>("additionalDetails"));
};
ORMEL_DECLARE_CODEC(ThreadTurnError)

template <>
struct ormel::coding::RecordTable<ormel::ThreadTurn> {
  static constexpr auto fields =
      std::tuple(required<&ThreadTurn::id>("id"), defaulted<&ThreadTurn::items>("items"),
                 defaulted<&ThreadTurn::itemsView>("itemsView"), required<&ThreadTurn::status>("status"),
                 optional<&ThreadTurn::error>("error"), optional<&ThreadTurn::startedAt>("startedAt"),
                 optional<&ThreadTurn::completedAt>("completedAt"),
                 optional<&ThreadTurn::durationMilliseconds>("durationMs", "duration_ms"));
};
ORMEL_DECLARE_CODEC(ThreadTurn)

template <>
struct ormel::coding::RecordTable<ormel::ThreadItemEntry> {
  static constexpr auto fields =
      std::tuple(required<&ThreadItemEntry::turnID>("turnId"), required<&ThreadItemEntry::item>("item"));
};
ORMEL_DECLARE_CODEC(ThreadItemEntry)

template <>
struct ormel::coding::RecordTable<ormel::ThreadTurnItemsListResponse> {
  static constexpr auto fields = std::tuple(required<&ThreadTurnItemsListResponse::data>("data"),
                                            optional<&ThreadTurnItemsListResponse::nextCursor>("nextCursor"),
                                            optional<&ThreadTurnItemsListResponse::backwardsCursor>("backwardsCursor"));
};
ORMEL_DECLARE_CODEC(ThreadTurnItemsListResponse)

template <>
struct ormel::coding::RecordTable<ormel::LegacyThreadTurnItemsListResponse> {
  static constexpr auto fields =
      std::tuple(required<&LegacyThreadTurnItemsListResponse::data>("data"),
                 optional<&LegacyThreadTurnItemsListResponse::nextCursor>("nextCursor"),
                 optional<&LegacyThreadTurnItemsListResponse::backwardsCursor>("backwardsCursor"));
};
ORMEL_DECLARE_CODEC(LegacyThreadTurnItemsListResponse)

template <>
struct ormel::coding::RecordTable<ormel::ThreadTurnsListResponse> {
  static constexpr auto fields = std::tuple(required<&ThreadTurnsListResponse::data>("data"),
                                            optional<&ThreadTurnsListResponse::nextCursor>("nextCursor"),
                                            optional<&ThreadTurnsListResponse::backwardsCursor>("backwardsCursor"));
};
ORMEL_DECLARE_CODEC(ThreadTurnsListResponse)

template <>
struct ormel::coding::RecordTable<ormel::ReviewStartResponse> {
  static constexpr auto fields = std::tuple(required<&ReviewStartResponse::turn>("turn"),
                                            required<&ReviewStartResponse::reviewThreadID>("reviewThreadId"));
};
ORMEL_DECLARE_CODEC(ReviewStartResponse)
