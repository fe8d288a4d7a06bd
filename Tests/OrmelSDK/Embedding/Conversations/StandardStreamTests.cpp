#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "OrmelSDK/Embedding/EmbeddedServer.h"

namespace ormel {
namespace {

using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::optionsFor;
using testing::SimulatorScenario;

constexpr int bothRan = 11;
constexpr std::array<int, 3> standardStreams = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};

bool isOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) >= 0; }

TEST(StandardStreamsDeathTest, ThatAreClosedStayFreeForTheApplication) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const SimulatorScenario scenario(embeddedTurn + embeddedTurnEnds + testing::turnIsAccepted + embeddedTurnEnds);
        for (const int stream : standardStreams) ::close(stream);
        auto thread = Ormel(optionsFor(scenario)).startThread();
        thread.run("first").get();
        for (const int stream : standardStreams) {
          if (isOpen(stream)) ::_exit(20 + stream);
        }
        const int file = ::open("/dev/null", O_RDWR);
        for (const int stream : standardStreams) ::dup2(file, stream);
        thread.run("second").get();
        ::_exit(scenario.failures().empty() ? bothRan : bothRan + 1);
      },
      ::testing::ExitedWithCode(bothRan), "");
}

}  // namespace
}  // namespace ormel
