#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Records/AccountRecords.h"
#include "Support/SimulatedSession.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ControlSessionNotifications, StartNoServerByThemselves) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    const auto heard = session.listen();
    server.pass(10s);
    EXPECT_EQ(server.server.launchesTried(), 0U);
    EXPECT_THAT(*heard, IsEmpty());
    EXPECT_NE(session.session->client(), nullptr);
  });
}

TEST(ControlSessionNotifications, ReachEverySubscriberAsTheyCame) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    session.ended();
    server.notify("before");
    auto first = session.subscribe();
    auto second = session.subscribe();
    server.write(
        "{\"method\":\"x/y\",\"params\":null}\n{\"method\":\"unknown\"}\n{\"method\":\"n\",\"params\":{\"a\":1}}\n");
    session.close();
    for (auto* channel : {&first, &second}) {
      OrmelControlNotification expected;
      expected.method = "x/y";
      expected.params = JSONValue();
      EXPECT_EQ(channel->nextBlocking(), expected);
      expected.method = "unknown";
      expected.params.reset();
      EXPECT_EQ(channel->nextBlocking(), expected);
      expected.method = "n";
      expected.params = JSONValue::object({{"a", 1}});
      EXPECT_EQ(channel->nextBlocking(), expected);
      EXPECT_EQ(channel->nextBlocking(), std::nullopt);
    }
  });
}

TEST(ControlSessionNotifications, AreHandedOnAlsoWhenNobodyCanReadMoreOutOfThem) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    session.ended();
    auto notifications = session.subscribe();
    const std::string lines[] = {R"({"method":"account/updated"})",
                                 R"({"method":"account/updated","params":{"planType":7}})",
                                 R"({"method":"account/login/completed","params":{}})",
                                 R"({"method":"thread/unarchived","params":{"threadId":"t1"}})"};
    for (const std::string& line : lines) server.write(line + "\n");
    session.close();
    for (const std::string& line : lines) {
      const auto notification = notifications.nextBlocking();
      ASSERT_TRUE(notification) << line;
      const JSONValue message = JSONValue::decode(line);
      EXPECT_EQ(notification->method, message.find("method")->stringValue());
      const JSONValue* params = message.find("params");
      EXPECT_EQ(notification->params, params ? std::optional(*params) : std::nullopt);
      EXPECT_FALSE(notification->accountNotification()) << line;
      EXPECT_FALSE(notification->threadLifecycleNotification()) << line;
    }
  });
}

TEST(ControlSessionNotifications, KeepTheNewest32ForASubscriberThatLags) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    session.ended();
    auto slow = session.subscribe();
    const auto heard = session.listen();
    for (int number = 0; number < 40; ++number) server.notify("n" + std::to_string(number));
    EXPECT_EQ(heard->size(), 40U);
    session.close();
    std::vector<std::string> got;
    while (auto told = slow.nextBlocking()) got.push_back(told->method);
    ASSERT_EQ(got.size(), 32U);
    for (std::size_t index = 0; index < got.size(); ++index) EXPECT_EQ(got[index], "n" + std::to_string(index + 8));
  });
}

TEST(ControlSessionNotifications, EndForOneSubscriberWithoutTheOthers) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    session.ended();
    const auto heard = session.listen();
    for (const bool isDropped : {false, true}) {
      auto other = session.subscribe();
      EXPECT_EQ(session.session->subscribers(), 2U);
      if (isDropped) {
        const auto gone = std::move(other);
      } else {
        other.cancel();
      }
      server.settle();
      EXPECT_EQ(session.session->subscribers(), 1U);
    }
    server.notify("n");
    EXPECT_THAT(*heard, ElementsAre("n"));
  });
}

TEST(ControlSessionNotifications, EndWithTheSession) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    const auto heard = session.listen();
    session.close();
    server.settle();
    EXPECT_THAT(*heard, ElementsAre("end"));
    EXPECT_EQ(session.session->subscribers(), 0U);
    // A subscriber from before has to subscribe again.
    const auto again = session.listen();
    server.answer("a/b", "1");
    session.ended();
    server.notify("n");
    EXPECT_THAT(*heard, ElementsAre("end"));
    EXPECT_THAT(*again, ElementsAre("n"));
  });
}

// The client goes in the same moment in which its last words are on their way to the relay.
TEST(ControlSessionNotifications, OfAClientThatWasGivenUpGoNowhere) {
  std::size_t dropped = 0;
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    SimulatedScheduler scheduler(seed);
    SimulatedServer server(scheduler);
    const SimulatedSession session(server);
    server.reply("refused", [](InMemoryProcess& process, const JSONValue& request) {
      process.write("{\"id\":" + request.find("id")->encode() + ",\"error\":{}}\n{\"method\":\"last words\"}\n");
    });
    server.answer("fine", "1");
    const auto heard = session.listen();
    session.ended("refused");
    const std::size_t before = heard->size();
    session.ended("fine");
    server.notify("n");
    server.settle();
    // Before the failure they may be heard, with the next client never.
    EXPECT_LE(before, 1U);
    EXPECT_EQ(heard->size(), before + 1);
    EXPECT_EQ(heard->back(), "n");
    if (before == 0) ++dropped;
  }
  EXPECT_GT(dropped, 0U);
}

TEST(ControlSessionNotifications, AreNotHeldUpByASlowSubscriberOrAServerThatTalksALot) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    const auto slow = session.subscribe();
    session.ended();
    std::string flood;
    for (int number = 0; number < 1000; ++number) flood += "{\"method\":\"n\"}\n";
    server.write(flood);
    EXPECT_EQ(session.ended(), "1");
    EXPECT_TRUE(slow.isReady());
  });
}

}  // namespace
