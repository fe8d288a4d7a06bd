#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Support/TurnRunHarness.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;

const std::string polite = politeServer;

TEST(AppServerTurnRun, StreamsATurnOnANewThreadToItsEnd) {
  TurnRunHarness server(polite + wholeTurn);
  auto turn = server.startTurn();
  EXPECT_EQ(turn.threadID, "t1");
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "turn.started", "turn.completed", "end"));
  EXPECT_THAT(server.methodsReceived(), ElementsAre("initialize", "initialized", "thread/start", "turn/start"));
  EXPECT_EQ(server.state(), "finished");
  EXPECT_TRUE(server.hasProcess());
}

}  // namespace
