#pragma once

#include <exception>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// Serves the MCP client on standard input and output until the input ends.
///
/// Each request is forwarded to the host application and its reply written as one line, strictly in order. A line
/// that is no JSON object with an `id` is dropped: it expects no answer, or there is no id to answer with.
///
/// Fails with `BridgeFailure` when the environment is incomplete, the host cannot be reached or has gone, and with
/// `OutputError` when standard output is broken. Any other failure is answered with an error.
void runBridge();

/// The answer to a request that could not be served.
JSONValue errorEnvelope(const JSONValue& id, const std::exception& error);

}  // namespace ormel
