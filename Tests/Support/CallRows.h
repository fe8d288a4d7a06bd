#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "OrmelSDK/Ormel.h"
#include "OrmelSDK/OrmelControlSession.h"
#include "Support/SimulatorScenario.h"

namespace ormel::testing {

/// A management call: the line that it sends, the result that the server answers with, and who makes it.
struct CallRow {
  /// As the request of a client that has only shaken hands before, which has the id 2.
  const char* line;
  const char* result;
  /// Either may be missing, as an object need not have the operation.
  void (*ofOrmel)(const Ormel&);
  void (*ofSession)(const OrmelControlSession&) = nullptr;
};

/// The front door of the simulator that plays the scenario.
inline Ormel ormelPlaying(const SimulatorScenario& scenario) {
  OrmelOptions options;
  options.ormelPathOverride = SimulatorScenario::executable();
  options.env = scenario.wholeEnvironment();
  return Ormel(options);
}

inline SimulatorScenario answering(const std::string& method, const std::string& result) {
  return SimulatorScenario("always answer initialize with {}\nalways ignore initialized\nalways answer " + method +
                           " with " + result + "\n");
}

/// Makes the row's call on a simulator of its own, and holds the line that this receives against the row's.
template <typename Make>
void expectLine(const CallRow& row, Make make) {
  const JSONValue request = JSONValue::decode(row.line);
  const SimulatorScenario scenario = answering(std::string(*request.find("method")->stringValue()), row.result);
  make(ormelPlaying(scenario));
  const auto lines = scenario.receivedLines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines.back(), row.line);
  for (const std::string& failure : scenario.failures()) ADD_FAILURE() << failure;
}

/// Makes each call, with real processes and pipes.
inline void expectLines(std::span<const CallRow> rows) {
  for (const CallRow& row : rows) {
    SCOPED_TRACE(row.line);
    if (row.ofOrmel) expectLine(row, row.ofOrmel);
    if (!row.ofSession) continue;
    const auto bySession = [&row](const Ormel& ormel) {
      const auto session = ormel.makeControlSession();
      row.ofSession(session);
      session.close().get();
    };
    expectLine(row, bySession);
  }
}

}  // namespace ormel::testing
