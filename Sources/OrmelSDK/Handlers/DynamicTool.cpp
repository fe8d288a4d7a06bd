#include "OrmelSDK/Handlers/DynamicTool.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolSpec> {
  static constexpr Field fields[] = {
      printed<&DynamicToolSpec::namespace_>("namespace"),      printed<&DynamicToolSpec::name>("name"),
      printed<&DynamicToolSpec::description>("description"),   printed<&DynamicToolSpec::inputSchema>("inputSchema"),
      printed<&DynamicToolSpec::deferLoading>("deferLoading"),
  };
};
ORMEL_DEFINE_PRINTED_RECORD(DynamicToolSpec)

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolCallContext> {
  static constexpr Field fields[] = {
      printed<&DynamicToolCallContext::threadID>("threadID"), printed<&DynamicToolCallContext::turnID>("turnID"),
      printed<&DynamicToolCallContext::callID>("callID"),     printed<&DynamicToolCallContext::namespace_>("namespace"),
      printed<&DynamicToolCallContext::tool>("tool"),         printed<&DynamicToolCallContext::arguments>("arguments"),
  };
};
ORMEL_DEFINE_PRINTED_RECORD(DynamicToolCallContext)

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolResult> {
  static constexpr Field fields[] = {
      printed<&DynamicToolResult::contentItems>("contentItems"),
      printed<&DynamicToolResult::success>("success"),
  };
};
ORMEL_DEFINE_PRINTED_RECORD(DynamicToolResult)
