#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "ormel-simulator/Scenario/Simulation.h"

namespace ormel::simulator {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Finished {
  int status = -1;
  std::string output;
  std::string errors;
};

Finished run(std::vector<std::string> arguments, std::vector<std::string> environment = {}) {
  testing::ChildOptions options;
  options.arguments = std::move(arguments);
  options.environment = std::move(environment);
  testing::ChildProgram child(testing::SimulatorScenario::executable(), options);
  child.closeInput();
  Finished finished;
  finished.output = child.readRestOfOutput();
  finished.errors = child.readErrors();
  finished.status = child.wait().status.value_or(-1);
  return finished;
}

TEST(SimulatorProgram, ExplainsScenariosInItsHelp) {
  const Finished help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output,
              AllOf(HasSubstr("client asks METHOD"), HasSubstr("--scenario"), HasSubstr("--record"),
                    HasSubstr("--check"), HasSubstr("ORMEL_SIMULATOR_SCENARIO"), HasSubstr("ORMEL_SIMULATOR_RECORD")));
}

TEST(SimulatorProgram, HasAnExampleInItsHelpThatIsAScenario) {
  const std::string help = run({"--help"}).output;
  const std::size_t start = help.find("  client asks initialize");
  const std::size_t end = help.find("What the client does:");
  ASSERT_NE(start, std::string::npos);
  ASSERT_NE(end, std::string::npos);
  const testing::SimulatorScenario scenario(help.substr(start, end - start));
  EXPECT_EQ(run({"--check", scenario.path().string()}).errors, "");
}

TEST(SimulatorProgram, ChecksAScenarioWithoutPlayingIt) {
  const testing::SimulatorScenario good("client asks a");
  const Finished accepted = run({"--check", good.path().string()});
  EXPECT_EQ(accepted.status, 0);
  EXPECT_EQ(accepted.output, good.path().string() + ": a scenario\n");
  const testing::SimulatorScenario bad("client asks a\nserver shouts");
  const Finished refused = run({"--check", bad.path().string()});
  EXPECT_EQ(refused.status, 98);
  EXPECT_THAT(refused.errors, StartsWith("ormel-simulator: " + bad.path().string() + ":2:8: expected "));
}

TEST(SimulatorProgram, TakesTheScenarioFromAnOptionBeforeTheEnvironment) {
  const testing::SimulatorScenario byOption("server exits 21");
  const testing::SimulatorScenario byEnvironment("server exits 22");
  const std::vector<std::string> server = testing::SimulatorScenario::serverArguments();
  EXPECT_EQ(run(server, byEnvironment.environment()).status, 22);
  std::vector<std::string> arguments = {"--scenario", byOption.path().string(), "--record",
                                        byOption.recordPath().string()};
  arguments.insert(arguments.end(), server.begin(), server.end());
  EXPECT_EQ(run(arguments, byEnvironment.environment()).status, 21);
  EXPECT_EQ(byOption.record("start").size(), 1u);
  EXPECT_EQ(byEnvironment.record("start").size(), 1u);
}

struct UsageCase {
  std::vector<std::string> arguments;
  const char* message;
};

void PrintTo(const UsageCase& row, std::ostream* stream) { *stream << ::testing::PrintToString(row.arguments); }

class SimulatorUsage : public ::testing::TestWithParam<UsageCase> {};

TEST_P(SimulatorUsage, IsCheckedBeforeAnythingElse) {
  const Finished finished = run(GetParam().arguments, {"ORMEL_SIMULATOR_SCENARIO=/nowhere/scenario"});
  EXPECT_EQ(finished.status, 99);
  EXPECT_EQ(finished.errors, std::string("ormel-simulator: ") + GetParam().message + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    All, SimulatorUsage,
    ::testing::Values(
        UsageCase{{}, "nothing to do; give \"app-server --listen stdio://\", or see --help"},
        UsageCase{{"app-server"}, "\"app-server\" must be followed by \"--listen stdio://\""},
        UsageCase{{"app-server", "--listen", "tcp://"}, "\"app-server\" must be followed by \"--listen stdio://\""},
        UsageCase{{"app-server", "--listen", "stdio://", "--port", "1"},
                  "after \"--listen stdio://\" only \"--config KEY=VALUE\" can follow"},
        UsageCase{{"app-server", "--listen", "stdio://", "--config"}, "\"--config\" must be followed by KEY=VALUE"},
        UsageCase{{"app-server", "--listen", "stdio://", "--config", "key"},
                  "\"--config\" must be followed by KEY=VALUE"},
        UsageCase{{"app-server", "--listen", "stdio://"},
                  "cannot read the scenario /nowhere/scenario: No such file or directory"},
        UsageCase{{"--record", "/nowhere/record", "app-server", "--listen", "stdio://"},
                  "cannot open the record /nowhere/record: No such file or directory"}));

TEST(SimulatorProgram, ServesAsAnAgentWithoutAScenario) {
  const Finished finished = run(testing::SimulatorScenario::serverArguments());
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.output + finished.errors, "");
}

TEST(SimulatorProgram, RefusesAPaceThatIsNone) {
  EXPECT_EQ(run(testing::SimulatorScenario::serverArguments(), {"ORMEL_SIMULATOR_PACE_MS=soon"}).status, 99);
  EXPECT_EQ(run(testing::SimulatorScenario::serverArguments(), {"ORMEL_SIMULATOR_PACE_MS=-1"}).status, 99);
}

TEST(SimulatorProgram, RefusesUnknownOptions) { EXPECT_EQ(run({"--wrong"}).status, 99); }

TEST(SimulatorProgram, RecordsItsArgumentsAndEnvironment) {
  const testing::SimulatorScenario scenario("server exits 0");
  std::vector<std::string> arguments = testing::SimulatorScenario::serverArguments();
  for (const char* more : {"--config", "features.goals=true", "--config", "a=\"x y\n\"", "--config", "-b=[1, 2]"}) {
    arguments.emplace_back(more);
  }
  std::vector<std::string> environment = scenario.environment();
  for (const char* more : {"PATH=/a:/b", "ORMEL_API_KEY=hunter2", "KESTRION_X=1=2", "SECRET=s"}) {
    environment.emplace_back(more);
  }
  EXPECT_EQ(run(arguments, environment).status, 0);
  const auto starts = scenario.record("start");
  ASSERT_EQ(starts.size(), 1u);
  const auto& recorded = *starts[0].find("arguments")->arrayValue();
  ASSERT_EQ(recorded.size(), arguments.size());
  for (std::size_t index = 0; index < arguments.size(); ++index) EXPECT_EQ(recorded[index], arguments[index]);
  const JSONValue& values = *starts[0].find("environment");
  EXPECT_EQ(*values.find("PATH"), JSONValue("/a:/b"));
  EXPECT_EQ(*values.find("ORMEL_API_KEY"), JSONValue("7 bytes"));
  EXPECT_EQ(starts[0].encode().find("hunter2"), std::string::npos);
  EXPECT_EQ(*values.find("KESTRION_X"), JSONValue("1=2"));
  EXPECT_EQ(values.find("SECRET"), nullptr);
  EXPECT_EQ(*starts[0].find("environmentNames"),
            json(R"(["KESTRION_X","ORMEL_API_KEY","ORMEL_SIMULATOR_RECORD","ORMEL_SIMULATOR_SCENARIO",)"
                 R"("PATH","SECRET"])"));
}

TEST(SimulatorProgram, RecordsEverythingReceivedInOrderAndAtOnce) {
  Simulation simulation("always ignore *\nclient asks a\nserver answers 1");
  simulation.send(R"({"method":"x"})");
  simulation.send(R"({"id":1,"method":"a"})");
  simulation.receive();
  EXPECT_THAT(simulation.scenario().receivedLines(), ElementsAre(R"({"method":"x"})", R"({"id":1,"method":"a"})"));
  EXPECT_EQ(simulation.finish(), 0);
  std::vector<std::string> events;
  std::int64_t order = 0;
  for (const JSONValue& entry : simulation.scenario().record()) {
    events.emplace_back(*entry.find("event")->stringValue());
    EXPECT_EQ(entry.find("order")->intValue(), ++order);
    EXPECT_EQ(entry.find("process")->numberValue().has_value(), true);
    EXPECT_GE(entry.find("milliseconds")->numberValue(), 0.0);
  }
  EXPECT_THAT(events, ElementsAre("start", "received", "received", "sent", "endOfInput", "exit"));
}

TEST(SimulatorProgram, RecordsBytesThatAreNotUTF8AlsoAsHexadecimals) {
  Simulation simulation("client asks a");
  simulation.send("a\xff");
  EXPECT_EQ(simulation.finish(), 97);
  const auto received = simulation.scenario().record("received");
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(*received[0].find("lineHex"), JSONValue("61ff"));
  EXPECT_EQ(*received[0].find("terminated"), JSONValue(true));
}

TEST(SimulatorProgram, RecordsALineThatTheEndOfTheInputCutOff) {
  Simulation simulation("client closes input");
  simulation.child().write("{\"id\":1");
  EXPECT_EQ(simulation.finish(), 97);
  const auto received = simulation.scenario().record("received");
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(*received[0].find("terminated"), JSONValue(false));
}

std::string contentsOf(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// The fenced blocks of the page that are marked as scenarios.
std::vector<std::string> documentedScenarios() {
  const std::string page = contentsOf(std::filesystem::path(ORMEL_SOURCE_FOLDER) / "docs/simulator.md");
  const std::string fence = "```scenario\n";
  std::vector<std::string> blocks;
  for (std::size_t start = page.find(fence); start != std::string::npos; start = page.find(fence, start)) {
    start += fence.size();
    blocks.push_back(page.substr(start, page.find("```", start) - start));
  }
  return blocks;
}

TEST(SimulatorDocumentation, ShowsOnlyScenariosThatAreWellFormed) {
  const auto blocks = documentedScenarios();
  EXPECT_GT(blocks.size(), 15u);
  for (const std::string& block : blocks) {
    const testing::SimulatorScenario scenario(block);
    EXPECT_EQ(run({"--check", scenario.path().string()}).errors, "") << block;
  }
}

TEST(SimulatorDocumentation, NamesEveryStatementOfTheHelp) {
  const std::string page = contentsOf(std::filesystem::path(ORMEL_SOURCE_FOLDER) / "docs/simulator.md");
  std::istringstream help(run({"--help"}).output);
  bool inReference = false;
  for (std::string line; std::getline(help, line);) {
    if (line.starts_with("What the client does:")) inReference = true;
    if (line.starts_with("In an EXAMPLE:")) break;
    if (!inReference || !line.starts_with("  ")) continue;
    std::istringstream words(line);
    std::string first;
    std::string second;
    words >> first >> second;
    EXPECT_THAT(page, HasSubstr("`" + first + " " + second));
  }
  EXPECT_TRUE(inReference);
}

TEST(SimulatorSamples, AreAllWellFormed) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(ORMEL_SOURCE_FOLDER) /
                                                               "Tools/ormel-simulator/scenarios")) {
    EXPECT_EQ(run({"--check", entry.path().string()}).errors, "");
    ++count;
  }
  EXPECT_GE(count, 4u);
}

std::string sample(std::string_view name) {
  return contentsOf(std::filesystem::path(ORMEL_SOURCE_FOLDER) / "Tools/ormel-simulator/scenarios" / name);
}

TEST(SimulatorSamples, PlayAWholeTurnWithAnApproval) {
  Simulation simulation(sample("turn-with-approval"));
  simulation.send(R"({"id":1,"method":"initialize","params":{"clientInfo":{"name":"n"},"capabilities":{}}})");
  simulation.send(R"({"method":"initialized"})");
  simulation.send(R"({"id":2,"method":"thread/start","params":{}})");
  simulation.send(R"({"id":3,"method":"turn/start","params":{"threadId":"thread-1","input":[]}})");
  for (int line = 0; line < 4; ++line) simulation.receive();
  const JSONValue approval = simulation.receive();
  EXPECT_EQ(*approval.find("method"), JSONValue("item/commandExecution/requestApproval"));
  simulation.send(R"({"id":1,"result":{"decision":"accept"}})");
  EXPECT_EQ(simulation.receive(),
            json(R"({"method":"serverRequest/resolved","params":{"threadId":"thread-1","requestId":1}})"));
  simulation.child().closeInput();
  const std::string rest = simulation.child().readRestOfOutput();
  EXPECT_THAT(rest,
              AllOf(HasSubstr("\"Piece 2. \""), HasSubstr("\"You said accept.\""), HasSubstr("\"turn/completed\"")));
  EXPECT_EQ(simulation.end(), 0) << simulation.failureText();
}

TEST(SimulatorSamples, PlayLinesThatAreCutAnywhere) {
  Simulation simulation(sample("broken-lines"));
  simulation.send(R"({"id":1,"method":"initialize"})");
  EXPECT_EQ(simulation.child().readLine(), "{\"id\":1,\"result\":{\"userAgent\":\"caf\xc3\xa9\"}}\r\n");
  simulation.send(R"({"method":"initialized"})");
  EXPECT_EQ(simulation.finish(), 0) << simulation.failureText();
}

TEST(SimulatorSamples, PlayAChildThatHoldsThePipes) {
  Simulation simulation(sample("pipes-held-by-a-child"));
  simulation.send(R"({"id":1,"method":"initialize"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":1,"result":{"userAgent":"simulator"}})"));
  simulation.child().closeInput();
  EXPECT_EQ(simulation.child().readErrors().size(), 100000u);
  EXPECT_EQ(simulation.receive(), json(R"({"method":"warning","params":{"message":"from the child"}})"));
  EXPECT_EQ(simulation.end(), 3);
}

}  // namespace
}  // namespace ormel::simulator
