#include "OrmelSDK/AppServerRun/Parsing/ToolItemParsing.h"

#include <optional>
#include <string_view>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"
#include "OrmelSDK/Coding/JSONMembers.h"
#include "OrmelSDK/Coding/KeptValue.h"

namespace ormel::detail {

namespace {

/// The word itself, or the `type` of an object.
std::optional<std::string_view> changeKindWord(const JSONValue& from) {
  if (const auto word = from.stringValue()) return word;
  const JSONObject* object = from.objectValue();
  return object ? textViewMember(*object, {"type"}) : std::nullopt;
}

std::optional<FileUpdateChange> fileUpdateChange(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  auto path = textMember(*object, {"path"});
  if (!path) return std::nullopt;
  const auto kind =
      coding::enumerationCase<PatchChangeKind>(firstMember(*object, {"kind"}, changeKindWord).value_or(""));
  return FileUpdateChange{*std::move(path), kind.value_or(PatchChangeKind::update)};
}

std::optional<McpToolCallResult> mcpToolCallResult(const JSONObject* object) {
  if (!object) return std::nullopt;
  return McpToolCallResult{valuesOf(arrayMember(*object, {"content"})),
                           ownedValueMember(*object, {"structuredContent", "structured_content"}),
                           ownedValueMember(*object, {"_meta"})};
}

std::optional<McpToolCallError> mcpToolCallError(const JSONObject* object) {
  auto message = object ? textMember(*object, {"message"}) : std::nullopt;
  if (!message) return std::nullopt;
  return McpToolCallError{*std::move(message)};
}

JSONValue arguments(const JSONObject& object) {
  const JSONValue* value = valueMember(object, {"arguments"});
  return value ? coding::kept(*value) : JSONValue::object();
}

}  // namespace

CommandExecutionItem parseCommandExecutionItem(std::string id, const JSONObject& object) {
  CommandExecutionItem item;
  item.id = std::move(id);
  item.command = textMember(object, {"command"}, "");
  item.workingDirectory = textMember(object, {"cwd"}, "");
  item.processID = textMember(object, {"processId", "process_id"});
  item.commandActions = valuesOf(arrayMember(object, {"commandActions", "command_actions"}));
  item.aggregatedOutput = textViewMember(object, {"aggregatedOutput"}).value_or("");
  item.exitCode = integerMember(object, {"exitCode"});
  item.status = commandExecutionStatus(textViewMember(object, {"status"}).value_or("failed"));
  item.durationMilliseconds = integerMember(object, {"durationMs", "duration_ms"});
  return item;
}

std::vector<FileUpdateChange> fileUpdateChanges(const JSONArray* from) { return listOf(from, fileUpdateChange); }

FileChangeItem parseFileChangeItem(std::string id, const JSONObject& object) {
  return {std::move(id), fileUpdateChanges(arrayMember(object, {"changes"})),
          commandExecutionStatus<PatchApplyStatus>(textViewMember(object, {"status"}).value_or("failed"))};
}

McpToolCallItem parseMcpToolCallItem(std::string id, const JSONObject& object) {
  McpToolCallItem item;
  item.id = std::move(id);
  item.server = textMember(object, {"server"}, "mcp");
  item.tool = textMember(object, {"tool"}, "tool");
  item.arguments = arguments(object);
  item.appContext = firstMember(object, {"appContext"}, decodeIfPossible<McpToolCallAppContext>);
  item.mcpAppResourceURI = textMember(object, {"mcpAppResourceUri", "mcp_app_resource_uri"});
  if (!item.mcpAppResourceURI && item.appContext) item.mcpAppResourceURI = item.appContext->resourceURI;
  item.pluginID = textMember(object, {"pluginId"});
  item.result = mcpToolCallResult(objectMember(object, {"result"}));
  item.error = mcpToolCallError(objectMember(object, {"error"}));
  item.status = mcpToolCallStatus(textViewMember(object, {"status"}).value_or("failed"));
  item.durationMilliseconds = firstMember(object, {"durationMs", "duration_ms"}, parseOptionalInt);
  item.progressMessage = textMember(object, {"progressMessage", "progress_message"});
  return item;
}

DynamicToolCallItem parseDynamicToolCallItem(std::string id, const JSONObject& object) {
  DynamicToolCallItem item;
  item.id = std::move(id);
  item.namespace_ = textMember(object, {"namespace"});
  item.tool = textMember(object, {"tool"}, "tool");
  item.arguments = arguments(object);
  item.status = mcpToolCallStatus<DynamicToolCallStatus>(textViewMember(object, {"status"}).value_or("failed"));
  if (const auto* parts = arrayMember(object, {"contentItems", "content_items"})) {
    item.contentItems = listOf(parts, decodeIfPossible<DynamicToolCallOutputContentItem>);
  }
  item.durationMilliseconds = firstMember(object, {"durationMs", "duration_ms"}, parseOptionalInt);
  item.success = booleanMember(object, {"success"});
  return item;
}

}  // namespace ormel::detail
