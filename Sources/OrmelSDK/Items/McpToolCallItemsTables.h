#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Items/McpToolCallItems.h"

template <>
struct ormel::coding::EnumerationTable<ormel::McpToolCallStatus> {
  static constexpr auto words =
      tolerant(McpToolCallStatus::failed,
               std::array{Word{McpToolCallStatus::inProgress, "in_progress"},
                          Word{McpToolCallStatus::completed, "completed"}, Word{McpToolCallStatus::failed, "failed"}});
};
ORMEL_DECLARE_ENUMERATION(McpToolCallStatus)

template <>
struct ormel::coding::RecordTable<ormel::McpToolCallResult> {
  static constexpr auto fields =
      std::tuple(required<&McpToolCallResult::content>("content"),
                 optional<&McpToolCallResult::structuredContent>("structured_content", "structuredContent")
                     .writtenAs("structuredContent"),
                 optional<&McpToolCallResult::meta>("_meta"));
};
ORMEL_DECLARE_CODEC(McpToolCallResult)

template <>
struct ormel::coding::RecordTable<ormel::McpToolCallError> {
  static constexpr auto fields = std::tuple(required<&McpToolCallError::message>("message"));
};
ORMEL_DECLARE_CODEC(McpToolCallError)

template <>
struct ormel::coding::RecordTable<ormel::McpToolCallAppContext> {
  static constexpr auto fields =
      std::tuple(required<&McpToolCallAppContext::connectorID>("connectorId", "connector_id"),
                 optional<&McpToolCallAppContext::linkID>("linkId", "link_id"),
                 optional<&McpToolCallAppContext::resourceURI>("resourceUri", "resource_uri"),
                 optional<&McpToolCallAppContext::appName>("appName", "app_name"),
                 optional<&McpToolCallAppContext::templateID>("templateId", "template_id"),
                 optional<&McpToolCallAppContext::actionName>("actionName", "action_name"));
};
ORMEL_DECLARE_CODEC(McpToolCallAppContext)

template <>
struct ormel::coding::RecordTable<ormel::McpToolCallItem> {
  static constexpr auto fields = std::tuple(
      required<&McpToolCallItem::id>("id"), required<&McpToolCallItem::server>("server"),
      required<&McpToolCallItem::tool>("tool"), required<&McpToolCallItem::arguments>("arguments"),
      optional<&McpToolCallItem::mcpAppResourceURI>("mcpAppResourceURI", "mcpAppResourceUri", "mcp_app_resource_uri")
          .writtenAs("mcpAppResourceUri"),
      optional<&McpToolCallItem::appContext>("appContext"), optional<&McpToolCallItem::pluginID>("pluginId"),
      optional<&McpToolCallItem::result>("result"), optional<&McpToolCallItem::error>("error"),
      required<&McpToolCallItem::status>("status"),
      optional<&McpToolCallItem::durationMilliseconds>("duration_ms", "durationMs"),
      optional<&McpToolCallItem::progressMessage>("progress_message", "progressMessage"));
};
ORMEL_DECLARE_CODEC(McpToolCallItem)
