#include "OrmelSDK/Handlers/DynamicTool.h"

#include <tuple>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Items/DynamicToolCallItemsTables.h"

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolSpec> {
  static constexpr auto fields = std::tuple(
      optional<&DynamicToolSpec::namespace_>("namespace"), required<&DynamicToolSpec::name>("name"),
      required<&DynamicToolSpec::description>("description"), required<&DynamicToolSpec::inputSchema>("inputSchema"),
      required<&DynamicToolSpec::deferLoading>("deferLoading"));
};
ORMEL_DEFINE_PRINTED_RECORD(DynamicToolSpec)

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolCallContext> {
  static constexpr auto fields = std::tuple(
      required<&DynamicToolCallContext::threadID>("threadID"), required<&DynamicToolCallContext::turnID>("turnID"),
      required<&DynamicToolCallContext::callID>("callID"), optional<&DynamicToolCallContext::namespace_>("namespace"),
      required<&DynamicToolCallContext::tool>("tool"), required<&DynamicToolCallContext::arguments>("arguments"));
};
ORMEL_DEFINE_PRINTED_RECORD(DynamicToolCallContext)

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolResult> {
  static constexpr auto fields = std::tuple(required<&DynamicToolResult::contentItems>("contentItems"),
                                            required<&DynamicToolResult::success>("success"));
};
ORMEL_DEFINE_PRINTED_RECORD(DynamicToolResult)
