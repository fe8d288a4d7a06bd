#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "ormel-simulator/Scenario/Simulation.h"

namespace ormel::simulator {
namespace {

// The numbers of the processes that the simulator has forked.
std::vector<pid_t> forks(const Simulation& simulation) {
  std::vector<pid_t> children;
  for (const JSONValue& entry : simulation.scenario().record("fork")) {
    children.push_back(static_cast<pid_t>(entry.find("child")->intValue().value_or(0)));
  }
  return children;
}

TEST(SimulatorMisbehaviour, SplitsRawBytesIntoSingleReads) {
  Simulation simulation(R"(server writes raw "{\"meth" then "od\":\"\xc3" then "\xa9\"}" then "\n")");
  std::vector<std::string> chunks;
  for (std::string chunk; chunks.size() < 4 && testing::readSome(simulation.child().outputDescriptor(), chunk);) {
    chunks.push_back(std::exchange(chunk, {}));
  }
  EXPECT_THAT(chunks, ::testing::ElementsAre("{\"meth", "od\":\"\xc3", "\xa9\"}", "\n"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorMisbehaviour, WritesAnyBytes) {
  Simulation simulation(R"(server writes raw "\xff\x00\xfe\r\n")");
  EXPECT_EQ(simulation.child().readLine(), std::string("\xff\0\xfe\r\n", 5));
  EXPECT_EQ(simulation.finish(), 0);
  const auto sent = simulation.scenario().record("sent");
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(*sent[0].find("textHex"), JSONValue("ff00fe0d0a"));
}

TEST(SimulatorMisbehaviour, WritesATextManyTimes) {
  Simulation simulation("server writes raw \"abc\" 100000 times then \"\\n\"");
  const std::string line = simulation.child().readLine();
  EXPECT_EQ(line.size(), 300001u);
  EXPECT_TRUE(line.starts_with("abcabc"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorMisbehaviour, WritesToStandardError) {
  Simulation simulation("server writes stderr \"some \" then \"trouble\\n\"");
  simulation.child().closeInput();
  EXPECT_EQ(simulation.child().readErrors(), "some trouble\n");
  EXPECT_EQ(simulation.end(), 0);
}

TEST(SimulatorMisbehaviour, FloodsAStream) {
  Simulation simulation("server floods stdout 1048577\nserver exits 0");
  EXPECT_EQ(simulation.child().readRestOfOutput().size(), 1048577u);
  EXPECT_EQ(simulation.end(), 0);
  Simulation onError("server floods stderr 200000\nserver exits 0");
  EXPECT_EQ(onError.child().readErrors().size(), 200000u);
  EXPECT_EQ(onError.end(), 0);
}

TEST(SimulatorMisbehaviour, ClosesItsOutputAndLivesOn) {
  Simulation simulation("server notifies a\nserver closes stdout\nclient asks b\nserver exits 3");
  EXPECT_EQ(simulation.receive(), json(R"({"method":"a"})"));
  EXPECT_EQ(simulation.child().readRestOfOutput(), "");
  simulation.send(R"({"id":1,"method":"b"})");
  EXPECT_EQ(simulation.end(), 3);
}

TEST(SimulatorMisbehaviour, ClosesItsErrorStreamAndLivesOn) {
  Simulation simulation("server writes stderr \"a\"\nserver closes stderr\nclient notifies b\nserver exits 3");
  EXPECT_EQ(simulation.child().readErrors(), "a");
  simulation.send(R"({"method":"b"})");
  EXPECT_EQ(simulation.end(), 3);
}

TEST(SimulatorMisbehaviour, ClosesItsInputAndLivesOn) {
  Simulation simulation("server closes stdin\nserver notifies closed\nwait until file \"go\"\nserver exits 3");
  simulation.receive();
  EXPECT_THROW(simulation.send("x"), std::system_error);
  simulation.scenario().createFile("go");
  EXPECT_EQ(simulation.end(), 3);
}

TEST(SimulatorMisbehaviour, FindsTheInputEndedAfterItHasClosedIt) {
  Simulation simulation("server closes stdin");
  EXPECT_EQ(simulation.end(), 0);
}

TEST(SimulatorMisbehaviour, ExitsAtOnceWithItsStatus) {
  Simulation simulation("server exits 0\nserver notifies never");
  EXPECT_EQ(simulation.end(), 0);
  EXPECT_EQ(simulation.child().readRestOfOutput(), "");
  Simulation failing("server exits 255");
  EXPECT_EQ(failing.end(), 255);
}

TEST(SimulatorMisbehaviour, DiesByASignalWithItsOutputStillInThePipe) {
  for (const auto& [name, number] : {std::pair("9", 9), {"SEGV", 11}, {"SIGABRT", 6}, {"TERM", 15}}) {
    Simulation simulation("server notifies last\nserver exits with signal " + std::string(name));
    EXPECT_EQ(simulation.end(), -number);
    EXPECT_EQ(simulation.child().readRestOfOutput(), "{\"method\":\"last\"}\n");
    EXPECT_EQ(simulation.scenario().record("exit").size(), 1u);
  }
}

TEST(SimulatorMisbehaviour, DiesByTheTermSignalUnlessItIgnoresIt) {
  Simulation simulation("server notifies up\nwait until killed");
  simulation.receive();
  ::kill(simulation.child().processID(), SIGTERM);
  EXPECT_EQ(simulation.end(), -SIGTERM);
}

TEST(SimulatorMisbehaviour, IgnoresASignalAndRecordsIt) {
  Simulation simulation("server ignores SIGTERM\nserver notifies up\nclient notifies go\nserver exits 4");
  simulation.receive();
  ::kill(simulation.child().processID(), SIGTERM);
  simulation.send(R"({"method":"go"})");
  EXPECT_EQ(simulation.end(), 4);
  const auto signals = simulation.scenario().record("signal");
  ASSERT_EQ(signals.size(), 1u);
  EXPECT_EQ(*signals[0].find("name"), JSONValue("SIGTERM"));
}

TEST(SimulatorMisbehaviour, WaitsForAnIgnoredSignal) {
  Simulation simulation(
      "server ignores TERM\nserver notifies up\nwait until signal TERM\nserver notifies again\n"
      "wait until signal TERM\nserver exits 4");
  simulation.receive();
  ::kill(simulation.child().processID(), SIGTERM);
  EXPECT_EQ(simulation.receive(), json(R"({"method":"again"})"));
  ::kill(simulation.child().processID(), SIGTERM);
  EXPECT_EQ(simulation.end(), 4);
  const auto signals = simulation.scenario().record("signal");
  EXPECT_EQ(signals.size(), 2u);
}

TEST(SimulatorMisbehaviour, StaysUntilItIsKilledWhateverTheClientCloses) {
  Simulation simulation("server notifies up\nwait until killed");
  simulation.receive();
  simulation.child().closeInput();
  simulation.child().closeOutput();
  ::kill(simulation.child().processID(), SIGKILL);
  EXPECT_EQ(simulation.end(), -SIGKILL);
}

TEST(SimulatorMisbehaviour, StopsReadingSoThatTheClientsPipeFills) {
  Simulation simulation(
      "server stops reading\nserver notifies up\nwait until file \"go\"\nserver resumes reading\n"
      "client notifies a\nserver notifies done");
  simulation.receive();
  testing::setNonBlocking(simulation.child().inputDescriptor(), true);
  const std::string line = "{\"method\":\"a\",\"params\":\"" + std::string(60000, 'x') + "\"}\n";
  simulation.child().write(line);
  while (::write(simulation.child().inputDescriptor(), line.data(), line.size()) > 0) {
  }
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_EQ(simulation.scenario().receivedLines().size(), 0u);
  simulation.scenario().createFile("go");
  EXPECT_EQ(simulation.receive(), json(R"({"method":"done"})"));
}

TEST(SimulatorMisbehaviour, EndsAfterTheLastStatementWhenTheClientClosesThoughItDoesNotRead) {
  Simulation simulation("server stops reading");
  simulation.send("never read");
  EXPECT_EQ(simulation.finish(), 0);
  EXPECT_TRUE(simulation.scenario().receivedLines().empty());
}

TEST(SimulatorMisbehaviour, LeavesAChildThatHoldsThePipesUntilTheInputCloses) {
  Simulation simulation(
      "server forks\n  wait until input closes\n  server notifies late\nend\nserver notifies early\nserver exits 6");
  EXPECT_EQ(simulation.receive(), json(R"({"method":"early"})"));
  EXPECT_EQ(simulation.end(), 6);
  EXPECT_FALSE(testing::isReadable(simulation.child().outputDescriptor()));
  simulation.child().closeInput();
  EXPECT_EQ(simulation.child().readRestOfOutput(), "{\"method\":\"late\"}\n");
  EXPECT_EQ(forks(simulation).size(), 1u);
}

TEST(SimulatorMisbehaviour, LeavesAChildThatHoldsThePipesUntilItIsKilled) {
  Simulation simulation("server forks\n  wait until killed\nend\nserver exits 0");
  EXPECT_EQ(simulation.end(), 0);
  ASSERT_EQ(forks(simulation).size(), 1u);
  EXPECT_FALSE(testing::isReadable(simulation.child().outputDescriptor()));
  ::kill(forks(simulation)[0], SIGKILL);
  EXPECT_EQ(simulation.child().readRestOfOutput(), "");
}

TEST(SimulatorMisbehaviour, NeverLeavesAChildBehindForLongerThanTheTimeLimit) {
  Simulation simulation(
      "time limit 50 ms\nserver forks\n  server ignores TERM\n  wait until killed\nend\nserver exits 0");
  EXPECT_EQ(simulation.end(), 0);
  EXPECT_EQ(simulation.child().readRestOfOutput(), "");
  EXPECT_THAT(simulation.child().readErrors(), ::testing::HasSubstr("the time limit of 50 ms is over"));
}

TEST(SimulatorMisbehaviour, NeverLeavesAChildBehindThatBlocksInAWrite) {
  Simulation simulation("time limit 50 ms\nserver forks\n  server floods stdout 10000000\nend\nserver exits 0");
  EXPECT_EQ(simulation.end(), 0);
  // Ends only when no process holds the stream any more.
  EXPECT_EQ(simulation.child().readErrors(), "");
  EXPECT_LT(simulation.child().readRestOfOutput().size(), 10000000u);
}

TEST(SimulatorMisbehaviour, LetsAChildCloseStreamsAndExitOnItsOwn) {
  Simulation simulation(
      "server forks\n  server closes stdout\n  server closes stderr\n  wait until input closes\n  server exits 7\nend\n"
      "server exits 0");
  EXPECT_EQ(simulation.end(), 0);
  EXPECT_EQ(simulation.child().readRestOfOutput(), "");
  EXPECT_EQ(simulation.child().readErrors(), "");
  ASSERT_EQ(forks(simulation).size(), 1u);
  simulation.child().closeInput();
}

TEST(SimulatorMisbehaviour, GoesOnBesideItsChild) {
  Simulation simulation("server forks\n  wait 1 ms\n  server notifies child\nend\nclient asks a\nserver answers 1");
  EXPECT_EQ(simulation.receive(), json(R"({"method":"child"})"));
  simulation.send(R"({"id":1,"method":"a"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":1,"result":1})"));
  EXPECT_EQ(simulation.finish(), 0);
}

}  // namespace
}  // namespace ormel::simulator
