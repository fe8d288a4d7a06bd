#pragma once

#include "MCPServer.h"

namespace tessella {

/// Serves one client on standard input and output, one message a line, until the input ends.
void serveStandardStreams(const MCPServer& server, const Session& session);

}  // namespace tessella
