#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/Ormel.h"
#include "Support/RunTranscript.h"
#include "Support/SimulatorScenario.h"

namespace ormel::testing {

/// The library as an application has it, and the real simulator behind real pipes.
///
///     ThreadHarness server(std::string(politeServer) + wholeTurn);
///     EXPECT_EQ(server.thread->run("hello").get().finalResponse, "");
///
/// At its end it lets go of the thread and fails the test if the client went against the scenario.
class ThreadHarness {
 public:
  explicit ThreadHarness(std::string_view scenarioText, const ThreadOptions& threadOptions = ThreadOptions())
      : scenario(scenarioText), thread(ormel().startThread(threadOptions)) {}
  ThreadHarness(const ThreadHarness&) = delete;
  ThreadHarness& operator=(const ThreadHarness&) = delete;
  ~ThreadHarness() {
    thread.reset();
    for (const std::string& failure : scenario.failures()) ADD_FAILURE() << failure;
  }

  Ormel ormel() const {
    OrmelOptions options;
    options.ormelPathOverride = SimulatorScenario::executable();
    options.env = scenario.wholeEnvironment();
    return Ormel(options);
  }

  SimulatorScenario scenario;
  std::optional<Thread> thread;
};

}  // namespace ormel::testing
