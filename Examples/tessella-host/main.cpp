// An example of a host: the application on the other end of the browser bridge's socket.

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <string>

#include "BridgeServer.h"
#include "BrowserTools.h"
#include "EnvelopeHandler.h"
#include "ListeningSocket.h"
#include "MCPServer.h"
#include "RequestLog.h"
#include "StdioServer.h"
#include "StopSignals.h"

namespace {

struct Options {
  std::string socketPath;
  std::string token;
  std::string workspacePath;
  bool standardStreams = false;
  bool verbose = false;
};

void declare(CLI::App& program, Options& options) {
  program.add_option("--socket", options.socketPath, "Path of the socket to listen on")
      ->envname("KESTRION_BROWSER_SOCKET");
  program.add_option("--token", options.token, "Token that bridges must present; safer in the environment than here")
      ->envname("KESTRION_BROWSER_TOKEN");
  program.add_flag("--stdio", options.standardStreams, "Serve one client directly on standard input and output");
  program.add_option("--workspace", options.workspacePath, "With --stdio: the workspace of the client")
      ->envname("KESTRION_WORKSPACE_PATH");
  program.add_flag("--verbose", options.verbose, "Print a line for each request on standard error");
}

void serveBridges(const tessella::MCPServer& server, const Options& options, tessella::RequestLog& log) {
  if (options.socketPath.empty()) throw std::runtime_error("--socket or KESTRION_BROWSER_SOCKET is needed.");
  if (options.token.empty()) throw std::runtime_error("--token or KESTRION_BROWSER_TOKEN is needed.");

  // A bridge that goes away shall be an error of the write.
  std::signal(SIGPIPE, SIG_IGN);
  const tessella::StopSignals stop;
  const tessella::EnvelopeHandler handler(server, options.token);
  const tessella::ListeningSocket socket(options.socketPath);
  tessella::BridgeServer bridges(socket, handler, log);
  std::cout << "listening on " << options.socketPath << std::endl;
  bridges.run(stop.descriptor());
}

}  // namespace

int main(int argumentCount, char** arguments) {
  CLI::App program("Answers the browser bridge: a small MCP server that opens pages of this machine.");
  Options options;
  declare(program, options);
  CLI11_PARSE(program, argumentCount, arguments);

  try {
    tessella::RequestLog log(options.verbose);
    const tessella::MCPServer server(tessella::browserTools(), log);
    if (options.standardStreams) {
      tessella::serveStandardStreams(server, {.name = "stdio", .workspacePath = options.workspacePath, .stop = {}});
    } else {
      serveBridges(server, options, log);
    }
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "tessella-host: " << error.what() << "\n";
    return 1;
  }
}
