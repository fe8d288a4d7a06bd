#include "OrmelSDK/AppServerRun/ToolItemParsing.h"

#include <optional>
#include <string_view>
#include <utility>

#include "OrmelSDK/AppServerRun/JSONFields.h"
#include "OrmelSDK/AppServerRun/ThreadItemWords.h"
#include "OrmelSDK/Coding/KeptValue.h"

namespace ormel::detail {

namespace {

/// The word itself, or the `type` of an object.
std::optional<std::string_view> changeKindWord(const JSONValue& from) {
  if (const auto word = from.stringValue()) return word;
  const JSONObject* object = from.objectValue();
  return object ? textUnder(*object, {"type"}) : std::nullopt;
}

std::optional<FileUpdateChange> fileUpdateChange(const JSONValue& from) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  auto path = ownTextUnder(*object, {"path"});
  if (!path) return std::nullopt;
  const auto kind =
      coding::enumerationCase<PatchChangeKind>(firstUnder(*object, {"kind"}, changeKindWord).value_or(""));
  return FileUpdateChange{*std::move(path), kind.value_or(PatchChangeKind::update)};
}

std::optional<McpToolCallResult> mcpToolCallResult(const JSONObject* object) {
  if (!object) return std::nullopt;
  return McpToolCallResult{valuesOf(arrayUnder(*object, {"content"})),
                           ownValueUnder(*object, {"structuredContent", "structured_content"}),
                           ownValueUnder(*object, {"_meta"})};
}

std::optional<McpToolCallError> mcpToolCallError(const JSONObject* object) {
  auto message = object ? ownTextUnder(*object, {"message"}) : std::nullopt;
  if (!message) return std::nullopt;
  return McpToolCallError{*std::move(message)};
}

JSONValue arguments(const JSONObject& object) {
  const JSONValue* value = valueUnder(object, {"arguments"});
  return value ? coding::kept(*value) : JSONValue::object();
}

}  // namespace

CommandExecutionItem parseCommandExecutionItem(std::string id, const JSONObject& object) {
  CommandExecutionItem item;
  item.id = std::move(id);
  item.command = ownTextUnder(object, {"command"}, "");
  item.workingDirectory = ownTextUnder(object, {"cwd"}, "");
  item.processID = ownTextUnder(object, {"processId", "process_id"});
  item.commandActions = valuesOf(arrayUnder(object, {"commandActions", "command_actions"}));
  item.aggregatedOutput = textUnder(object, {"aggregatedOutput"}).value_or("");
  item.exitCode = integerUnder(object, {"exitCode"});
  item.status = commandExecutionStatus(textUnder(object, {"status"}).value_or("failed"));
  item.durationMilliseconds = integerUnder(object, {"durationMs", "duration_ms"});
  return item;
}

std::vector<FileUpdateChange> fileUpdateChanges(const JSONArray* from) { return listOf(from, fileUpdateChange); }

FileChangeItem parseFileChangeItem(std::string id, const JSONObject& object) {
  return {std::move(id), fileUpdateChanges(arrayUnder(object, {"changes"})),
          commandExecutionStatus<PatchApplyStatus>(textUnder(object, {"status"}).value_or("failed"))};
}

McpToolCallItem parseMcpToolCallItem(std::string id, const JSONObject& object) {
  McpToolCallItem item;
  item.id = std::move(id);
  item.server = ownTextUnder(object, {"server"}, "mcp");
  item.tool = ownTextUnder(object, {"tool"}, "tool");
  item.arguments = arguments(object);
  item.appContext = firstUnder(object, {"appContext"}, decodeIfPossible<McpToolCallAppContext>);
  item.mcpAppResourceURI = ownTextUnder(object, {"mcpAppResourceUri", "mcp_app_resource_uri"});
  if (!item.mcpAppResourceURI && item.appContext) item.mcpAppResourceURI = item.appContext->resourceURI;
  item.pluginID = ownTextUnder(object, {"pluginId"});
  item.result = mcpToolCallResult(objectUnder(object, {"result"}));
  item.error = mcpToolCallError(objectUnder(object, {"error"}));
  item.status = mcpToolCallStatus(textUnder(object, {"status"}).value_or("failed"));
  item.durationMilliseconds = firstUnder(object, {"durationMs", "duration_ms"}, parseOptionalInt);
  item.progressMessage = ownTextUnder(object, {"progressMessage", "progress_message"});
  return item;
}

DynamicToolCallItem parseDynamicToolCallItem(std::string id, const JSONObject& object) {
  DynamicToolCallItem item;
  item.id = std::move(id);
  item.namespace_ = ownTextUnder(object, {"namespace"});
  item.tool = ownTextUnder(object, {"tool"}, "tool");
  item.arguments = arguments(object);
  item.status = mcpToolCallStatus<DynamicToolCallStatus>(textUnder(object, {"status"}).value_or("failed"));
  if (const auto* parts = arrayUnder(object, {"contentItems", "content_items"})) {
    item.contentItems = listOf(parts, decodeIfPossible<DynamicToolCallOutputContentItem>);
  }
  item.durationMilliseconds = firstUnder(object, {"durationMs", "duration_ms"}, parseOptionalInt);
  item.success = booleanUnder(object, {"success"});
  return item;
}

}  // namespace ormel::detail
