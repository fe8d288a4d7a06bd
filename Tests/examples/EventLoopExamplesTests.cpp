#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <vector>

#include "Support/Descriptor.h"
#include "examples/ExampleOutput.h"

namespace ormel {
namespace {

using testing::ChildOptions;
using testing::ChildProgram;
using ::testing::MatchesRegex;
using testing::outputOf;
using testing::SimulatorScenario;
using ::testing::StartsWith;
using testing::TemporaryDirectory;

/// Those that could be built.
const std::vector<const char*> programs = {
#if defined(__linux__)
    "11-event-loop",
#endif
#if defined(ORMEL_HAS_GLIB_EXAMPLE)
    "glib-loop",
#endif
};

TEST(EventLoopExamples, HoldAConversation) {
  for (const char* program : programs) {
    SCOPED_TRACE(program);
    EXPECT_THAT(outputOf(program), MatchesRegex("You said: \"Tell me about loops\"[^\n]*\n"));
  }
}

TEST(EventLoopExamples, EndCleanlyWhenInterrupted) {
  for (const char* program : programs) {
    SCOPED_TRACE(program);
    const TemporaryDirectory state;
    ChildOptions options;
    // An answer that goes on until it is interrupted.
    options.arguments = {SimulatorScenario::executable(), "slow"};
    options.environment = {"ORMEL_SIMULATOR_PACE_MS=1", "ORMEL_SIMULATOR_STATE=" + state.path().string()};
    ChildProgram child(std::string(ORMEL_EXAMPLES_FOLDER "/") + program, options);
    child.closeInput();
    testing::awaitReadable(child.outputDescriptor());
    ::kill(child.processID(), SIGINT);
    EXPECT_NE(child.readRestOfOutput(), "");
    EXPECT_THAT(child.readErrors(), StartsWith("Operation aborted\n"));
    EXPECT_EQ(child.wait().status, 0);
  }
}

}  // namespace
}  // namespace ormel
