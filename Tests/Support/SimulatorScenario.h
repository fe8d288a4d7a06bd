#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/Launch/ProcessEnvironment.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "Support/Eventually.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::testing {

/// A scenario for `ormel-simulator` in a folder of its own, with the record of what the simulator was told.
///
/// Programs that use it link `OrmelSimulatorProgram`, which also has the simulator built first.
class SimulatorScenario {
 public:
  explicit SimulatorScenario(std::string_view text) { std::ofstream(path()) << text; }

  static std::string executable() { return ORMEL_SIMULATOR_EXECUTABLE; }
  static std::vector<std::string> serverArguments() { return {"app-server", "--listen", "stdio://"}; }

  std::filesystem::path path() const { return folder_.path() / "scenario"; }
  std::filesystem::path recordPath() const { return folder_.path() / "record"; }

  /// The environment of this process, with the two variables that make the simulator play this scenario.
  std::map<std::string, std::string> wholeEnvironment() const {
    auto all = detail::ProcessEnvironment::current();
    for (const std::string& variable : environment()) {
      const auto equals = variable.find('=');
      all.insert_or_assign(variable.substr(0, equals), variable.substr(equals + 1));
    }
    return all;
  }

  /// The two variables that make the simulator play this scenario, as "NAME=value".
  std::vector<std::string> environment() const {
    return {"ORMEL_SIMULATOR_SCENARIO=" + path().string(), "ORMEL_SIMULATOR_RECORD=" + recordPath().string()};
  }

  /// Makes the file that a "wait until file" of the scenario waits for.
  void createFile(std::string_view name) const { std::ofstream(folder_.path() / name) << "\n"; }

  /// The simulator's record so far.
  std::vector<JSONValue> record() const {
    std::vector<JSONValue> entries;
    std::ifstream file(recordPath());
    for (std::string line; std::getline(file, line);) entries.push_back(JSONValue::decode(line));
    return entries;
  }

  /// The entries of one kind, such as "received", "failure" or "exit".
  std::vector<JSONValue> record(std::string_view event) const {
    std::vector<JSONValue> entries;
    for (const JSONValue& entry : record()) {
      const JSONValue* kind = entry.find("event");
      if (kind && *kind == JSONValue(event)) entries.push_back(entry);
    }
    return entries;
  }

  /// The lines that the client has sent, in order.
  std::vector<std::string> receivedLines() const { return texts("received", "line"); }

  /// The methods of those lines, over all processes; "reply" for an answer.
  std::vector<std::string> methodsReceived() const {
    std::vector<std::string> methods;
    for (const std::string& line : receivedLines()) {
      const JSONValue message = JSONValue::decode(line);
      const JSONValue* method = message.find("method");
      methods.emplace_back(method ? method->stringValue().value_or("?") : "reply");
    }
    return methods;
  }
  bool waitForMethod(std::string_view method) const {
    return eventually([&] {
      const auto methods = methodsReceived();
      return std::find(methods.begin(), methods.end(), method) != methods.end();
    });
  }
  std::size_t processesStarted() const { return record("start").size(); }

  /// Deviations from the scenario, in the simulator's words; empty when there were none.
  std::vector<std::string> failures() const { return texts("failure", "text"); }

 private:
  std::vector<std::string> texts(std::string_view event, std::string_view key) const {
    std::vector<std::string> values;
    for (const JSONValue& entry : record(event)) {
      const JSONValue* value = entry.find(key);
      if (value) values.emplace_back(value->stringValue().value_or(""));
    }
    return values;
  }

  TemporaryDirectory folder_;
};

}  // namespace ormel::testing
