#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ormel-simulator/Scenario/Simulation.h"

namespace ormel::simulator {
namespace {

TEST(SimulatorConversation, AnswersARequestWithTheIdThatItCameWith) {
  Simulation simulation("client asks a\nserver answers {\"x\": 1}\nclient asks b\nserver answers null");
  simulation.send(R"({"id":7,"method":"a"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":7,"result":{"x":1}})"));
  simulation.send(R"({"id":"q","method":"b","params":[]})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":"q","result":null})"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorConversation, AnswersWithAnError) {
  Simulation simulation("client asks a\nserver answers error {\"code\": -32601, \"message\": \"no\"}");
  simulation.send(R"({"id":1,"method":"a"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":1,"error":{"code":-32601,"message":"no"}})"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorConversation, AnswersTheLatestRequestFirstAndNamedOnesInAnyOrder) {
  Simulation simulation(
      "client asks a as first\nclient asks b as second\nclient asks c\n"
      "server answers 3\nserver answers first 1\nserver answers second 2\nserver answers first 4");
  simulation.send(R"({"id":11,"method":"a"})");
  simulation.send(R"({"id":12,"method":"b"})");
  simulation.send(R"({"id":13,"method":"c"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":13,"result":3})"));
  EXPECT_EQ(simulation.receive(), json(R"({"id":11,"result":1})"));
  EXPECT_EQ(simulation.receive(), json(R"({"id":12,"result":2})"));
  EXPECT_EQ(simulation.receive(), json(R"({"id":11,"result":4})"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorConversation, NotifiesWithAndWithoutParams) {
  Simulation simulation("server notifies a\nserver notifies b {\"x\": [1]}");
  EXPECT_EQ(simulation.receive(), json(R"({"method":"a"})"));
  EXPECT_EQ(simulation.receive(), json(R"({"method":"b","params":{"x":[1]}})"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorConversation, AsksAndExpectsTheAnswerByItsId) {
  Simulation simulation(
      "server asks a {\"x\": 1} expecting {\"ok\": true}\n"
      "server asks b with id \"q\" expecting error {\"code\": 5}\n"
      "server asks c as third\nserver asks d\nclient answers 4\nclient answers third 3");
  EXPECT_EQ(simulation.receive(), json(R"({"id":1,"method":"a","params":{"x":1}})"));
  simulation.send(R"({"id":1,"result":{"ok":true}})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":"q","method":"b"})"));
  simulation.send(R"({"id":"q","error":{"code":5,"message":"m"}})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":2,"method":"c"})"));
  EXPECT_EQ(simulation.receive(), json(R"({"id":3,"method":"d"})"));
  simulation.send(R"({"id":3,"result":4})");
  simulation.send(R"({"id":2,"result":3})");
  EXPECT_EQ(simulation.finish(), 0) << simulation.failureText();
}

TEST(SimulatorConversation, SendsAndExpectsWholeMessages) {
  Simulation simulation(
      "client sends exactly {\"id\": \"$integer:id\", \"method\": \"a\"}\n"
      "server sends {\"id\": \"$id\", \"result\": 1, \"error\": {}}\nclient sends [1]");
  simulation.send(R"({"id":4,"method":"a"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":4,"result":1,"error":{}})"));
  simulation.send("[1]");
  EXPECT_EQ(simulation.finish(), 0) << simulation.failureText();
}

TEST(SimulatorConversation, LetsAWholeMessageThatIsARequestBeAnswered) {
  Simulation simulation("client sends {\"method\": \"a\"}\nserver answers 1");
  simulation.send(R"({"id":4,"method":"a"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":4,"result":1})"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorConversation, UsesCapturesInLaterMessages) {
  Simulation simulation(
      "client asks a {\"threadId\": \"$capture:thread\", \"n\": \"$integer:n\"} as request\n"
      "server answers {\"thread\": \"$thread\", \"text\": \"n is ${n}\", \"id\": \"$request\"}\n"
      "client notifies b {\"threadId\": \"$thread\"}\n"
      "server writes raw '{\"method\":\"x${n}\"}\\n'");
  simulation.send(R"({"id":9,"method":"a","params":{"threadId":"t1","n":5}})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":9,"result":{"thread":"t1","text":"n is 5","id":9}})"));
  simulation.send(R"({"method":"b","params":{"threadId":"t1"}})");
  EXPECT_EQ(simulation.receive(), json(R"({"method":"x5"})"));
  EXPECT_EQ(simulation.finish(), 0) << simulation.failureText();
}

TEST(SimulatorConversation, RepeatsWithACount) {
  Simulation simulation(
      "repeat 3 times as i\n  client asks a {\"n\": \"$i\"}\n  server answers {\"text\": \"number ${i}\"}\nend\n"
      "repeat 0 times\n  server notifies never\nend");
  for (int index = 1; index <= 3; ++index) {
    simulation.send(numbered(R"({"id":1,"method":"a","params":{"n":%}})", index));
    EXPECT_EQ(simulation.receive(), json(numbered(R"({"id":1,"result":{"text":"number %"}})", index)));
  }
  simulation.child().closeInput();
  EXPECT_EQ(simulation.child().readRestOfOutput(), "");
  EXPECT_EQ(simulation.end(), 0);
}

TEST(SimulatorConversation, MeetsExpectationsInAnyOrder) {
  Simulation simulation(
      "server asks q as question\n"
      "in any order\n  client asks a {\"n\": 1} as one\n  client asks a {\"n\": 2} as two\n  client notifies b\n"
      "  client answers question {\"ok\": true}\nend\n"
      "server answers one 1\nserver answers two 2");
  simulation.receive();
  simulation.send(R"({"id":1,"result":{"ok":true}})");
  simulation.send(R"({"id":8,"method":"a","params":{"n":2}})");
  simulation.send(R"({"method":"b"})");
  simulation.send(R"({"id":9,"method":"a","params":{"n":1}})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":9,"result":1})"));
  EXPECT_EQ(simulation.receive(), json(R"({"id":8,"result":2})"));
  EXPECT_EQ(simulation.finish(), 0) << simulation.failureText();
}

TEST(SimulatorConversation, WritesABlockAtOnce) {
  Simulation simulation(
      "client asks a\nin one write\n  server notifies b\n  server answers 1\n  server asks c\n"
      "  server writes raw \"x\"\n  repeat 2 times\n    server sends {}\n  end\nend");
  simulation.send(R"({"id":1,"method":"a"})");
  std::string chunk;
  testing::readSome(simulation.child().outputDescriptor(), chunk);
  EXPECT_THAT(chunk, ::testing::HasSubstr("\"b\""));
  EXPECT_THAT(chunk, ::testing::EndsWith("x{}\n{}\n"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorConversation, AnswersStandingRulesWhereverTheyApply) {
  Simulation simulation(
      "always answer initialize with {\"userAgent\": \"s\"}\n"
      "always answer a {\"n\": \"$integer:n\"} with {\"n\": \"$n\"}\n"
      "always answer b with error {\"code\": 1, \"message\": \"m\"}\n"
      "always ignore initialized\n"
      "client asks c\nserver answers 1");
  simulation.send(R"({"id":1,"method":"initialize"})");
  simulation.send(R"({"method":"initialized"})");
  simulation.send(R"({"id":2,"method":"a","params":{"n":5}})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":1,"result":{"userAgent":"s"}})"));
  EXPECT_EQ(simulation.receive(), json(R"({"id":2,"result":{"n":5}})"));
  simulation.send(R"({"id":3,"method":"c"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":3,"result":1})"));
  simulation.send(R"({"id":4,"method":"b"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":4,"error":{"code":1,"message":"m"}})"));
  EXPECT_EQ(simulation.finish(), 0) << simulation.failureText();
}

TEST(SimulatorConversation, PrefersTheExpectationAndThenTheLatestStandingRule) {
  Simulation simulation(
      "always answer * with 1\nalways answer a with 2\nclient asks a\nserver answers 3\nclient closes input");
  simulation.send(R"({"id":1,"method":"a"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":1,"result":3})"));
  simulation.send(R"({"id":2,"method":"a"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":2,"result":2})"));
  simulation.send(R"({"id":3,"method":"b"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":3,"result":1})"));
  EXPECT_EQ(simulation.finish(), 0) << simulation.failureText();
}

TEST(SimulatorConversation, AnswersStandingRulesWhileItWaitsAndKeepsTheRest) {
  Simulation simulation("always answer a with 1\nwait until file \"go\"\nclient asks b\nserver answers 2");
  simulation.send(R"({"id":1,"method":"b"})");
  simulation.send(R"({"id":2,"method":"a"})");
  EXPECT_EQ(simulation.receive(), json(R"({"id":2,"result":1})"));
  simulation.scenario().createFile("go");
  EXPECT_EQ(simulation.receive(), json(R"({"id":1,"result":2})"));
  EXPECT_EQ(simulation.finish(), 0) << simulation.failureText();
}

TEST(SimulatorConversation, WaitsForADuration) {
  Simulation simulation("wait 1 ms\nserver notifies a");
  EXPECT_EQ(simulation.receive(), json(R"({"method":"a"})"));
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorConversation, ExpectsTheEndOfTheInputAndGoesOn) {
  Simulation simulation("client closes input\nserver notifies bye\nserver exits 5");
  simulation.child().closeInput();
  EXPECT_EQ(simulation.receive(), json(R"({"method":"bye"})"));
  EXPECT_EQ(simulation.end(), 5);
}

TEST(SimulatorConversation, StaysAfterTheLastStatementUntilTheInputEnds) {
  Simulation simulation("always answer ping with 1");
  for (int id = 1; id <= 2; ++id) {
    simulation.send(numbered(R"({"method":"ping","id":%})", id));
    EXPECT_EQ(simulation.receive(), json(numbered(R"({"result":1,"id":%})", id)));
  }
  EXPECT_EQ(simulation.finish(), 0);
}

TEST(SimulatorConversation, CountsRunsByTheRecord) {
  const testing::SimulatorScenario scenario(
      "in run 1\n  server exits 11\nend\nin run 2\n  server exits 12\nend\nin run 3 or later\n  server exits 13\nend");
  testing::ChildOptions options;
  options.arguments = testing::SimulatorScenario::serverArguments();
  options.environment = scenario.environment();
  for (const int status : {11, 12, 13, 13}) {
    testing::ChildProgram child(testing::SimulatorScenario::executable(), options);
    EXPECT_EQ(child.wait().status, status);
  }
  EXPECT_EQ(scenario.record("start").size(), 4u);
}

}  // namespace
}  // namespace ormel::simulator
