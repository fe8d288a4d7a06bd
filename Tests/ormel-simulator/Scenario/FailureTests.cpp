#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ormel-simulator/Scenario/Simulation.h"

namespace ormel::simulator {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

struct FailureCase {
  const char* scenario;
  int line;
  const char* expected;
  const char* input;
  const char* received;
  const char* reason;
};

void PrintTo(const FailureCase& row, std::ostream* stream) { *stream << ::testing::PrintToString(row.scenario); }

class SimulatorFailures : public ::testing::TestWithParam<FailureCase> {};

TEST_P(SimulatorFailures, SayWhatWasExpectedWhereAndWhatCame) {
  const FailureCase& row = GetParam();
  Simulation simulation(row.scenario);
  simulation.child().write(row.input);
  EXPECT_EQ(simulation.finish(), 97);
  const std::string text = simulation.failureAt(row.line, row.expected, row.received, row.reason);
  EXPECT_EQ(simulation.failureText(), text);
  EXPECT_EQ(simulation.child().readErrors(), "ormel-simulator: " + text + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    All, SimulatorFailures,
    ::testing::Values(
        FailureCase{"# one\nclient  asks a {\n  \"x\": 1 # two\n}", 2, "client asks a { \"x\": 1 }",
                    "{\"id\":1,\"method\":\"a\",\"params\":{\"x\":2}}\n", R"({"id":1,"method":"a","params":{"x":2}})",
                    "params.x is 2 instead of 1"},
        FailureCase{"client asks a {}", 1, "client asks a {}", "{\"id\":1,\"method\":\"a\"}\n",
                    R"({"id":1,"method":"a"})", "there are no params"},
        FailureCase{"client asks a without params", 1, "client asks a without params",
                    "{\"id\":1,\"method\":\"a\",\"params\":null}\n", R"({"id":1,"method":"a","params":null})",
                    "there are params"},
        FailureCase{"client asks a", 1, "client asks a", "{\"id\":1,\"method\":\"b\"}\n", R"({"id":1,"method":"b"})",
                    "the method is b instead of a"},
        FailureCase{"client asks a", 1, "client asks a", "{\"method\":\"a\"}\n", R"({"method":"a"})",
                    "it is a notification"},
        FailureCase{"client notifies a", 1, "client notifies a", "{\"id\":1,\"method\":\"a\"}\n",
                    R"({"id":1,"method":"a"})", "it is a request"},
        FailureCase{"client asks a", 1, "client asks a", "{\"id\":1,\"result\":2}\n", R"({"id":1,"result":2})",
                    "it is an answer with a result"},
        FailureCase{"client asks a", 1, "client asks a", "{\"id\":1,\"error\":2}\n", R"({"id":1,"error":2})",
                    "it is an answer with an error"},
        FailureCase{"client asks a", 1, "client asks a", "", "the end of the input",
                    "the client closed the server's input"},
        FailureCase{"client closes input", 1, "client closes input", "{\"method\":\"a\"}\n", R"({"method":"a"})",
                    "the client was to close the server's input"},
        FailureCase{"server asks q expecting 1", 1, "server asks q expecting 1", "{\"id\":1,\"result\":2}\n",
                    R"({"id":1,"result":2})", "result is 2 instead of 1"},
        FailureCase{"server asks q expecting 1", 1, "server asks q expecting 1", "{\"id\":\"1\",\"result\":1}\n",
                    R"({"id":"1","result":1})", "the id is \"1\" instead of 1"},
        FailureCase{"server asks q expecting 1", 1, "server asks q expecting 1", "{\"id\":1,\"error\":{}}\n",
                    R"({"id":1,"error":{}})", "it is an answer with an error"},
        FailureCase{"server asks q expecting error 1", 1, "server asks q expecting error 1",
                    "{\"id\":1,\"result\":{}}\n", R"({"id":1,"result":{}})", "it is an answer with a result"},
        FailureCase{"client answers 1", 1, "client answers 1", "{\"id\":1,\"result\":1}\n", R"({"id":1,"result":1})",
                    "the server has asked no such request so far"},
        FailureCase{"client answers 1", 1, "client answers 1", "{\"id\":1,\"method\":\"a\"}\n",
                    R"({"id":1,"method":"a"})", "it is a request"},
        FailureCase{"client sends {\"x\": 1}", 1, "client sends {\"x\": 1}", "{\"x\":2}\n", R"({"x":2})",
                    "message.x is 2 instead of 1"},
        FailureCase{"in any order\nclient asks a\nclient asks b\nend", 1,
                    "in any order client asks a client asks b end",
                    "{\"id\":1,\"method\":\"b\"}\n{\"id\":2,\"method\":\"b\"}\n", R"({"id":2,"method":"b"})",
                    "the method is b instead of a"},
        FailureCase{"", 0, "nothing after the end of the scenario", "{\"method\":\"a\"}\n", R"({"method":"a"})",
                    "the scenario had come to its end"}));

INSTANTIATE_TEST_SUITE_P(
    Malformed, SimulatorFailures,
    ::testing::Values(FailureCase{"client asks a", 1, "client asks a", "[1]\n", "[1]", "it is no JSON object"},
                      FailureCase{"client asks a", 1, "client asks a", "{\"id\":1,\"method\":3}\n",
                                  R"({"id":1,"method":3})", "its method is no text, or empty"},
                      FailureCase{"client asks a", 1, "client asks a", "{\"id\":1.5,\"method\":\"a\"}\n",
                                  R"({"id":1.5,"method":"a"})", "its id is neither a whole number nor a text"},
                      FailureCase{"client asks a", 1, "client asks a", "{\"id\":1}\n", R"({"id":1})",
                                  "it has neither a method nor exactly one of result and error"},
                      FailureCase{"client asks a", 1, "client asks a", "{\"id\":1,\"result\":1,\"error\":1}\n",
                                  R"({"id":1,"result":1,"error":1})",
                                  "it has neither a method nor exactly one of result and error"},
                      FailureCase{"client asks a", 1, "client asks a", "{\"result\":1}\n", R"({"result":1})",
                                  "it is an answer without an id"},
                      FailureCase{"client asks a", 1, "client asks a",
                                  "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"a\"}\n",
                                  R"({"jsonrpc":"2.0","id":1,"method":"a"})",
                                  "it has a member \"jsonrpc\", which such a message does not have"},
                      FailureCase{"client asks a", 1, "client asks a", "{\"id\":1,\"method\":\"a\"}",
                                  R"({"id":1,"method":"a"})", "the input ended inside of this line"}));

TEST(SimulatorFailure, ReportsALineThatIsNotJSON) {
  Simulation simulation("client asks a");
  simulation.send("nonsense");
  EXPECT_EQ(simulation.finish(), 97);
  EXPECT_THAT(simulation.failureText(), HasSubstr("received: nonsense\n  because:  it is not JSON: "));
}

TEST(SimulatorFailure, ReportsABlankLine) {
  Simulation simulation("client asks a");
  simulation.send("");
  EXPECT_EQ(simulation.finish(), 97);
  EXPECT_THAT(simulation.failureText(), HasSubstr("because:  it is not JSON: "));
}

TEST(SimulatorFailure, RecordsItsPartsForTests) {
  Simulation simulation("\nclient asks a {\"x\": 1}");
  simulation.send(R"({"id":1,"method":"a","params":{}})");
  EXPECT_EQ(simulation.finish(), 97);
  const auto failures = simulation.scenario().record("failure");
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(*failures[0].find("line"), JSONValue(2));
  EXPECT_EQ(*failures[0].find("expected"), JSONValue("client asks a {\"x\": 1}"));
  EXPECT_EQ(*failures[0].find("received"), JSONValue(R"({"id":1,"method":"a","params":{}})"));
  EXPECT_EQ(*failures[0].find("reason"), JSONValue("params.x is missing"));
  const auto exits = simulation.scenario().record("exit");
  ASSERT_EQ(exits.size(), 1u);
  EXPECT_EQ(*exits[0].find("status"), JSONValue(97));
}

TEST(SimulatorFailure, LosesPatienceWhenNothingComes) {
  Simulation simulation("patience 20 ms\nclient asks a");
  EXPECT_EQ(simulation.end(), 97);
  EXPECT_EQ(simulation.failureText(), simulation.failureAt(2, "client asks a", "nothing", "nothing came within 20 ms"));
}

TEST(SimulatorFailure, EndsWhenTheTimeLimitIsOver) {
  Simulation simulation("time limit 20 ms\nwait until killed");
  EXPECT_EQ(simulation.end(), 97);
  EXPECT_EQ(simulation.failureText(),
            simulation.failureAt(2, "wait until killed", "nothing", "the time limit of 20 ms is over"));
}

TEST(SimulatorFailure, EndsAWriteThatBlocksForGoodByTheAlarm) {
  Simulation simulation("time limit 20 ms\nserver floods stdout 10000000");
  EXPECT_EQ(simulation.end(), -14);
}

TEST(SimulatorFailure, ReportsAClosedOutput) {
  Simulation simulation("client notifies go\nserver notifies a");
  simulation.child().closeOutput();
  simulation.send(R"({"method":"go"})");
  EXPECT_EQ(simulation.end(), 97);
  EXPECT_EQ(simulation.failureText(),
            simulation.failureAt(2, "server notifies a", "a failure of writing", "Broken pipe"));
}

TEST(SimulatorFailure, ShortensAReceivedLineThatIsVeryLong) {
  Simulation simulation("client asks a");
  simulation.send(std::string(R"({"method":")").append(5000, 'x').append("\"}"));
  EXPECT_EQ(simulation.finish(), 97);
  EXPECT_THAT(simulation.failureText(), HasSubstr("xxx... (5013 bytes)\n"));
}

struct ScenarioFaultCase {
  const char* scenario;
  const char* input;
  const char* message;
};

void PrintTo(const ScenarioFaultCase& row, std::ostream* stream) { *stream << ::testing::PrintToString(row.scenario); }

class SimulatorScenarioFaults : public ::testing::TestWithParam<ScenarioFaultCase> {};

TEST_P(SimulatorScenarioFaults, EndWithAStatusOfTheirOwn) {
  Simulation simulation(GetParam().scenario);
  simulation.child().write(GetParam().input);
  EXPECT_EQ(simulation.end(), 98);
  const std::string text = simulation.scenario().path().string() + GetParam().message;
  EXPECT_EQ(simulation.child().readErrors(), "ormel-simulator: " + text + "\n");
  EXPECT_THAT(simulation.scenario().failures(), ElementsAre(text));
}

INSTANTIATE_TEST_SUITE_P(
    All, SimulatorScenarioFaults,
    ::testing::Values(
        ScenarioFaultCase{"\n  wait", "", ":2:7: expected a duration such as 250 ms or 3 s, but the line ends here"},
        ScenarioFaultCase{"server answers 1", "", ":1:1: no request of the client waits for an answer"},
        ScenarioFaultCase{"client asks a\nserver answers 1\nserver answers 2", "{\"id\":1,\"method\":\"a\"}\n",
                          ":3:1: no request of the client waits for an answer"},
        ScenarioFaultCase{"server answers a 1\nclient asks a as a", "", ":1:1: the request \"a\" has not come so far"},
        ScenarioFaultCase{"server notifies a \"$x\"\nclient asks a \"$any:x\"", "",
                          ":1:1: nothing has been captured as \"x\" so far"},
        ScenarioFaultCase{"server stops reading\nclient asks a", "",
                          ":2:1: the server has stopped reading, so it can expect nothing"},
        ScenarioFaultCase{"server stops reading\nin any order\nclient asks a\nend", "",
                          ":2:1: the server has stopped reading, so it can expect nothing"}));

}  // namespace
}  // namespace ormel::simulator
