#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/Items/CommandItems.h"
#include "OrmelSDK/Items/DynamicToolCallItems.h"
#include "OrmelSDK/Items/FileChangeItems.h"
#include "OrmelSDK/Items/McpToolCallItems.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

CommandExecutionItem parseCommandExecutionItem(std::string id, const JSONObject& object);

/// The elements that name a path.
std::vector<FileUpdateChange> fileUpdateChanges(const JSONArray* from);
FileChangeItem parseFileChangeItem(std::string id, const JSONObject& object);

McpToolCallItem parseMcpToolCallItem(std::string id, const JSONObject& object);
DynamicToolCallItem parseDynamicToolCallItem(std::string id, const JSONObject& object);

}  // namespace ormel::detail
