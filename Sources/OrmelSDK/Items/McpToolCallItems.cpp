#include "OrmelSDK/Items/McpToolCallItems.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::McpToolCallStatus> {
  static constexpr auto rule = tolerant(McpToolCallStatus::failed);
  static constexpr Word<McpToolCallStatus> words[] = {
      {McpToolCallStatus::inProgress, "in_progress"},
      {McpToolCallStatus::completed, "completed"},
      {McpToolCallStatus::failed, "failed"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpToolCallResult> {
  static constexpr Field fields[] = {
      required<&McpToolCallResult::content>("content"),
      optional<&McpToolCallResult::structuredContent>("structured_content", "structuredContent")
          .writtenAs("structuredContent"),
      optional<&McpToolCallResult::meta>("_meta"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpToolCallError> {
  static constexpr Field fields[] = {
      required<&McpToolCallError::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpToolCallAppContext> {
  static constexpr Field fields[] = {
      required<&McpToolCallAppContext::connectorID>("connectorId", "connector_id"),
      optional<&McpToolCallAppContext::linkID>("linkId", "link_id"),
      optional<&McpToolCallAppContext::resourceURI>("resourceUri", "resource_uri"),
      optional<&McpToolCallAppContext::appName>("appName", "app_name"),
      optional<&McpToolCallAppContext::templateID>("templateId", "template_id"),
      optional<&McpToolCallAppContext::actionName>("actionName", "action_name"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::McpToolCallItem> {
  static constexpr Field fields[] = {
      required<&McpToolCallItem::id>("id"),
      required<&McpToolCallItem::server>("server"),
      required<&McpToolCallItem::tool>("tool"),
      required<&McpToolCallItem::arguments>("arguments"),
      optional<&McpToolCallItem::mcpAppResourceURI>("mcpAppResourceURI", "mcpAppResourceUri", "mcp_app_resource_uri")
          .writtenAs("mcpAppResourceUri"),
      optional<&McpToolCallItem::appContext>("appContext"),
      optional<&McpToolCallItem::pluginID>("pluginId"),
      optional<&McpToolCallItem::result>("result"),
      optional<&McpToolCallItem::error>("error"),
      required<&McpToolCallItem::status>("status"),
      optional<&McpToolCallItem::durationMilliseconds>("duration_ms", "durationMs"),
      optional<&McpToolCallItem::progressMessage>("progress_message", "progressMessage"),
  };
};

ORMEL_DEFINE_ENUMERATION(McpToolCallStatus)
ORMEL_DEFINE_HOT_RECORD(McpToolCallResult)
ORMEL_DEFINE_HOT_RECORD(McpToolCallError)
ORMEL_DEFINE_HOT_RECORD(McpToolCallAppContext)
ORMEL_DEFINE_HOT_RECORD(McpToolCallItem)
