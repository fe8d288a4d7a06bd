#include "CommandLine.h"

#include <CLI/CLI.hpp>

namespace ormel::doctor {

namespace {

constexpr int wrongUsage = 2;

}  // namespace

CommandLine readCommandLine(int argumentCount, const char* const* arguments) {
  CommandLine line;
  double seconds = 10;
  CLI::App app{"Tests the set-up of an agent server: where it is looked for, whether it starts, and what it answers.",
               "ormel-doctor"};
  app.add_option("--server", line.server, "The server executable; without it the usual places are searched")
      ->type_name("PATH");
  app.add_flag("--json", line.json, "Print one JSON object");
  app.add_option("--timeout", seconds, "How long the server may take to answer, in seconds")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.001, 3600.0))
      ->capture_default_str();
  app.footer("Exit status: 0 if the server can be used, 1 if not, 2 for a wrong command line.");
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& error) {
    line.exitStatus = app.exit(error) == 0 ? 0 : wrongUsage;
  }
  line.timeout = std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
  return line;
}

}  // namespace ormel::doctor
