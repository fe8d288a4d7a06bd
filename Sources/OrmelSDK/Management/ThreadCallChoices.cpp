#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Management/ThreadParams.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadSortKey> {
  static constexpr auto words =
      closed(std::array{Word{ThreadSortKey::createdAt, "created_at"}, Word{ThreadSortKey::updatedAt, "updated_at"},
                        Word{ThreadSortKey::recencyAt, "recency_at"}});
};
ORMEL_DECLARE_ENUMERATION(ThreadSortKey)
ORMEL_DEFINE_ENUMERATION(ThreadSortKey)

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadSortDirection> {
  static constexpr auto words =
      closed(std::array{Word{ThreadSortDirection::asc, "asc"}, Word{ThreadSortDirection::desc, "desc"}});
};
ORMEL_DECLARE_ENUMERATION(ThreadSortDirection)
ORMEL_DEFINE_ENUMERATION(ThreadSortDirection)

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadTurnSortDirection> {
  static constexpr auto words =
      closed(std::array{Word{ThreadTurnSortDirection::asc, "asc"}, Word{ThreadTurnSortDirection::desc, "desc"}});
};
ORMEL_DECLARE_ENUMERATION(ThreadTurnSortDirection)
ORMEL_DEFINE_ENUMERATION(ThreadTurnSortDirection)

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadSourceKind> {
  static constexpr auto words = closed(std::array{
      Word{ThreadSourceKind::cli, "cli"},
      Word{ThreadSourceKind::vscode, "vscode"},
      Word{ThreadSourceKind::exec, "exec"},
      Word{ThreadSourceKind::appServer, "appServer"},
      Word{ThreadSourceKind::subAgent, "subAgent"},
      Word{ThreadSourceKind::subAgentReview, "subAgentReview"},
      Word{ThreadSourceKind::subAgentCompact, "subAgentCompact"},
      Word{ThreadSourceKind::subAgentThreadSpawn, "subAgentThreadSpawn"},
      Word{ThreadSourceKind::subAgentOther, "subAgentOther"},
      Word{ThreadSourceKind::unknown, "unknown"},
  });
};
ORMEL_DECLARE_ENUMERATION(ThreadSourceKind)
ORMEL_DEFINE_ENUMERATION(ThreadSourceKind)
