#pragma once

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// The MCP servers. One with a "plugin" is there as long as the plugin is active; "contents" are those of
/// its resources; "fault" says why it does not run.
const JSONValue& mcpServerDescriptions();

}  // namespace ormel::simulator
