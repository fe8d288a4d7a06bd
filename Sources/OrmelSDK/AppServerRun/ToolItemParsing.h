#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/CommandItems.h"
#include "OrmelSDK/DynamicToolCallItems.h"
#include "OrmelSDK/FileChangeItems.h"
#include "OrmelSDK/JSONValue.h"
#include "OrmelSDK/McpToolCallItems.h"

namespace ormel::detail {

CommandExecutionItem parseCommandExecutionItem(std::string id, const JSONObject& object);

/// Those of the elements that name a path.
std::vector<FileUpdateChange> fileUpdateChanges(const JSONArray* from);
FileChangeItem parseFileChangeItem(std::string id, const JSONObject& object);

McpToolCallItem parseMcpToolCallItem(std::string id, const JSONObject& object);
DynamicToolCallItem parseDynamicToolCallItem(std::string id, const JSONObject& object);

}  // namespace ormel::detail
