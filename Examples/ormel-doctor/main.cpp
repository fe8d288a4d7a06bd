// Tests the set-up of the server from end to end, and tells what to do where it is broken.

#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <utility>

#include "CommandLine.h"
#include "Findings.h"
#include "ormel-control/Output.h"
#include "ormel-control/Run.h"
#include "ormel-control/TerminalText.h"

namespace ormel::doctor {

namespace {

Task<control::Report> examine(control::Server server, DiagnosisOptions options, std::shared_ptr<int> status) {
  const Diagnosis diagnosis = co_await server.ormel.diagnose(options);
  control::Report report = findings(diagnosis);
  *status = report.status;
  co_return report;
}

int run(const CommandLine& line) {
  OrmelOptions options;
  options.ormelPathOverride = line.server;
  DiagnosisOptions diagnosisOptions;
  diagnosisOptions.timeout = line.timeout;
  const control::Server server{Ormel(options)};
  const auto status = std::make_shared<int>(1);
  const control::Action action = [diagnosisOptions, status](control::Server asked) {
    return examine(std::move(asked), diagnosisOptions, status);
  };
  try {
    return control::runAction(action, server, line.json);
  } catch (const control::OutputClosed&) {
    // Nobody reads on; the status is told all the same.
    return *status;
  }
}

}  // namespace

}  // namespace ormel::doctor

int main(int argumentCount, char** arguments) {
  const auto line = ormel::doctor::readCommandLine(argumentCount, arguments);
  if (line.exitStatus) return *line.exitStatus;
  // A reader that has gone is an error of the write.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return ormel::doctor::run(line);
  } catch (const std::exception& error) {
    std::cerr << "ormel-doctor: " << ormel::control::onOneLine(error.what()) << '\n';
    return 1;
  }
}
