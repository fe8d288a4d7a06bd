#pragma once

#include <OrmelSDK/JSON/JSONValue.h>

#include <string_view>

namespace tessella {

namespace errorcode {
inline constexpr int parseError = -32700;
inline constexpr int invalidRequest = -32600;
inline constexpr int methodNotFound = -32601;
inline constexpr int invalidParams = -32602;
inline constexpr int internalError = -32603;
/// Ours, from the range that JSON-RPC leaves to servers.
inline constexpr int wrongToken = -32001;
}  // namespace errorcode

/// A complete response to the request with that id.
ormel::JSONValue resultResponse(const ormel::JSONValue& id, const ormel::JSONValue& result);
ormel::JSONValue errorResponse(const ormel::JSONValue& id, int code, std::string_view message);

/// The message's id, or `null` if it has none.
ormel::JSONValue idOf(const ormel::JSONValue& message);

}  // namespace tessella
