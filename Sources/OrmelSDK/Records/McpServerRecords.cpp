#include "OrmelSDK/Records/McpServerRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::McpServerStatusSummary> {
  static constexpr Field fields[] = {
      required<&McpServerStatusSummary::name>("name"),
      optional<&McpServerStatusSummary::runtimeStatus>("runtimeStatus"),
      optional<&McpServerStatusSummary::pluginID>("pluginId"),
      optional<&McpServerStatusSummary::serverInfo>("serverInfo"),
      required<&McpServerStatusSummary::tools>("tools"),
      required<&McpServerStatusSummary::resources>("resources"),
      required<&McpServerStatusSummary::resourceTemplates>("resourceTemplates"),
      required<&McpServerStatusSummary::authStatus>("authStatus"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpServerStatusListResponse> {
  static constexpr Field fields[] = {
      required<&McpServerStatusListResponse::data>("data"),
      optional<&McpServerStatusListResponse::nextCursor>("nextCursor"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpServerOAuthLoginResponse> {
  static constexpr Field fields[] = {
      required<&McpServerOAuthLoginResponse::authorizationURL>("authorizationUrl"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpResourceContent> {
  static constexpr Field fields[] = {
      required<&McpResourceContent::uri>("uri"),    optional<&McpResourceContent::mimeType>("mimeType"),
      optional<&McpResourceContent::text>("text"),  optional<&McpResourceContent::blob>("blob"),
      optional<&McpResourceContent::meta>("_meta"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpResourceReadResponse> {
  static constexpr Field fields[] = {
      required<&McpResourceReadResponse::contents>("contents"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpServerToolCallResponse> {
  static constexpr Field fields[] = {
      required<&McpServerToolCallResponse::content>("content"),
      optional<&McpServerToolCallResponse::structuredContent>("structuredContent", "structured_content"),
      optional<&McpServerToolCallResponse::isError>("isError"),
      optional<&McpServerToolCallResponse::meta>("_meta"),
  };
};

ORMEL_DEFINE_VOCABULARY(McpAuthStatus)
ORMEL_DEFINE_VOCABULARY(McpServerRuntimeStatus)
ORMEL_DEFINE_RECORD(McpServerStatusSummary)
ORMEL_DEFINE_RECORD(McpServerStatusListResponse)
ORMEL_DEFINE_RECORD(McpServerOAuthLoginResponse)
ORMEL_DEFINE_RECORD(McpResourceContent)
ORMEL_DEFINE_RECORD(McpResourceReadResponse)
ORMEL_DEFINE_RECORD(McpServerToolCallResponse)
