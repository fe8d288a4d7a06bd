#pragma once

#include <OrmelSDK/JSON/JSONValue.h>

#include <string_view>

namespace tessella {

/// The MCP results of a tool call.
ormel::JSONValue textResult(std::string_view text);
ormel::JSONValue failedResult(std::string_view text);

/// A result for programs, with the same as text for clients that do not read structured content.
ormel::JSONValue structuredResult(std::string_view text, const ormel::JSONValue& structured);

}  // namespace tessella
