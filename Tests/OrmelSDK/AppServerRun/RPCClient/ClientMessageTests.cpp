#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "Support/SimulatedServer.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// The effect of a line on the request with the id 2, which is in flight.
struct LineRow {
  const char* line;
  const char* told;
};

constexpr const char* notAnObject = "stream error: Unexpected non-object JSON from app-server";

constexpr LineRow lines[] = {
    {R"({"id":2,"result":{"x":1}})", R"({"x":1})"},
    {R"({"id":2.0,"result":1})", "1"},
    {R"({"id":2,"result":null})", "null"},
    {R"({"id":2,"result":1,"error":{"code":1,"message":"m"}})", "1"},
    {R"({"jsonrpc":"2.0","id":2,"result":1})", "1"},
    {R"({"method":3,"id":2,"result":7})", "7"},
    {R"({"method":null,"id":2,"result":7})", "7"},
    {R"({"id":2,"error":{"code":-5,"message":"no"}})", "other error: App-server error -5: no"},
    {R"({"id":2,"error":{}})", "other error: App-server error -32000: Unknown app-server error"},
    {R"({"id":2,"error":{"code":1.5,"message":3}})", "other error: App-server error -32000: Unknown app-server error"},
    {R"({"id":2,"error":{"code":"1","message":null,"data":1}})",
     "other error: App-server error -32000: Unknown app-server error"},
    {"[1]", notAnObject},
    {"3", notAnObject},
    {"null", notAnObject},
    {"\"text\"", notAnObject},
    {" {\"id\":2,\"result\":1}\r", "1"},
    // A line that does not answer the request leaves it waiting.
    {R"({"id":"2","result":1})", "waiting"},
    {R"({"id":1.5,"result":1})", "waiting"},
    {R"({"id":null,"result":1})", "waiting"},
    {R"({"id":true,"result":1})", "waiting"},
    {R"({"id":[2],"result":1})", "waiting"},
    {R"({"id":3,"result":1})", "waiting"},
    {R"({"id":1,"result":1})", "waiting"},
    {R"({"result":1})", "waiting"},
    {R"({"id":2})", "waiting"},
    {R"({"id":2,"error":"no"})", "waiting"},
    {R"({"id":2,"error":null})", "waiting"},
    {R"({"id":2,"error":[{"code":1}]})", "waiting"},
    {R"({"method":"a/b","id":2,"result":7})", "waiting"},
    {R"({"method":"a/b","result":7})", "waiting"},
    {"{}", "waiting"},
    {"", "waiting"},
    {"\r", "waiting"},
};

TEST(AppServerRPCClientMessages, EndARequestByItsAnswerAlone) {
  for (const LineRow& row : lines) {
    SCOPED_TRACE(row.line);
    SimulatedScheduler scheduler(1);
    SimulatedServer server(scheduler);
    const auto client = server.readyClient();
    const auto answer = server.start(client->sendRequest("a/b"));
    server.write(std::string(row.line) + "\n");
    EXPECT_EQ(server.told(answer), row.told);
    EXPECT_EQ(client->hasProcess(), std::string(row.told) != notAnObject);
    EXPECT_EQ(client->requestsInFlight(), std::string(row.told) == "waiting" ? 1U : 0U);
    server.end(client->terminate());
  }
}

TEST(AppServerRPCClientMessages, KeepWhatCameWithAnError) {
  withServers([](SimulatedServer& server) {
    server.refuse("a/b", R"({"code":-32602,"message":"bad params","data":{"at":"x"}})");
    const auto client = server.readyClient();
    const auto answer = server.start(client->sendRequest("a/b"));
    try {
      server.taken(answer);
      ADD_FAILURE() << "the request was refused";
    } catch (const AppServerRPCError& error) {
      EXPECT_EQ(error, AppServerRPCError(-32602, "bad params", JSONValue::object({{"at", "x"}})));
    }
    EXPECT_TRUE(client->hasProcess());
  });
}

TEST(AppServerRPCClientMessages, FailAllThatIsInFlightByOneLineThatIsNoJSON) {
  constexpr const char* corrupted = "stream error: App-server decode error at $: data corrupted: ";
  for (const char* line : {"{", "{\"id\":2,", "nope", "{\"id\":2,\"result\":01}", "{} {}", "\xEF\xBB\xBFx"}) {
    SCOPED_TRACE(line);
    withServers([&](SimulatedServer& server) {
      const auto client = server.readyClient();
      const auto first = server.start(client->sendRequest("a/b"));
      const auto second = server.start(client->sendRequest("a/b"));
      server.write(std::string(line) + "\n{\"id\":2,\"result\":1}\n");
      EXPECT_THAT(server.told(first), StartsWith(corrupted));
      EXPECT_THAT(server.told(second), StartsWith(corrupted));
      EXPECT_FALSE(client->hasProcess());
      EXPECT_EQ(server.server.running(), 0U);
    });
  }
}

TEST(AppServerRPCClientMessages, EndTheProcessByABadLineAlsoWhenNothingIsInFlight) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    auto told = client->takeNotificationStream();
    server.write("{\"method\":\"before\"}\n[]\n");
    EXPECT_FALSE(client->hasProcess());
    EXPECT_EQ(server.server.running(), 0U);
    // The notifications go on with the next process.
    server.end(client->startProcess());
    server.write("{\"method\":\"after\"}\n");
    server.end(client->terminate());
    std::vector<std::string> methods;
    while (auto notification = told.nextBlocking()) methods.push_back(notification->method);
    EXPECT_THAT(methods, ElementsAre("before", "after"));
  });
}

struct NotificationRow {
  const char* line;
  const char* method;
  const char* params;
};

constexpr NotificationRow notifications[] = {
    {R"({"method":"n"})", "n", nullptr},
    {R"({"method":"n","params":null})", "n", "null"},
    {R"({"method":"n","params":{"a":[1]}})", "n", R"({"a":[1]})"},
    {R"({"method":"n","params":7})", "n", "7"},
    {R"({"method":"n","id":null})", "n", nullptr},
    {R"({"method":"n","id":1.5,"params":{}})", "n", "{}"},
    {R"({"method":"n","id":{},"result":1})", "n", nullptr},
    {R"({"method":""})", "", nullptr},
};

TEST(AppServerRPCClientMessages, HandOnNotificationsAsTheyCame) {
  for (const NotificationRow& row : notifications) {
    SCOPED_TRACE(row.line);
    SimulatedScheduler scheduler(1);
    SimulatedServer server(scheduler);
    const auto client = server.readyClient();
    auto told = client->takeNotificationStream();
    server.write(std::string(row.line) + "\n");
    server.end(client->terminate());
    detail::AppServerRPCNotification expected;
    expected.method = row.method;
    if (row.params) expected.params = JSONValue::decode(row.params);
    EXPECT_EQ(told.nextBlocking(), expected);
    EXPECT_EQ(told.nextBlocking(), std::nullopt);
    // Nothing was answered.
    EXPECT_EQ(server.process().linesWritten().size(), 2U);
  }
}

TEST(AppServerRPCClientMessages, RefuseEveryRequestOfTheServer) {
  withServers([](SimulatedServer& server) {
    // During the handshake too.
    server.reply("initialize", [](InMemoryProcess& process, const JSONValue& request) {
      process.request("early", "item/tool/call", JSONValue::object());
      process.answer(request, JSONValue::object());
    });
    const auto client = server.readyClient();
    for (const char* id : {"7", "\"7\"", "\"\"", "-3"})
      server.write(R"({"method":"x","id":)" + std::string(id) + "}\n");
    std::vector<std::string> answers;
    for (const std::string& line : server.process().linesWritten()) {
      if (line.find("\"error\"") != std::string::npos) answers.push_back(line);
    }
    const auto refusal = [](const std::string& id) {
      return R"({"id":)" + id + R"(,"error":{"code":-32601,"message":"Method not found"}})";
    };
    EXPECT_THAT(answers,
                ElementsAre(refusal("\"early\""), refusal("7"), refusal("\"7\""), refusal("\"\""), refusal("-3")));
  });
}

struct SentRow {
  std::optional<JSONValue> params;
  const char* request;
  const char* notification;
};

TEST(AppServerRPCClientMessages, GoOutOnALineEachWithParamsIfGiven) {
  const SentRow rows[] = {
      {std::nullopt, R"({"id":2,"method":"a/b"})", R"({"method":"c/d"})"},
      {JSONValue(), R"({"id":2,"method":"a/b","params":null})", R"({"method":"c/d","params":null})"},
      {JSONValue::object(), R"({"id":2,"method":"a/b","params":{}})", R"({"method":"c/d","params":{}})"},
      {JSONValue::object({{"t", "x\ny"}}), R"({"id":2,"method":"a/b","params":{"t":"x\ny"}})",
       R"({"method":"c/d","params":{"t":"x\ny"}})"},
  };
  for (const SentRow& row : rows) {
    SCOPED_TRACE(row.request);
    SimulatedScheduler scheduler(1);
    SimulatedServer server(scheduler);
    server.answer("a/b", "{}");
    const auto client = server.readyClient();
    server.end(client->sendRequest("a/b", row.params));
    server.end(client->sendNotification("c/d", row.params));
    const auto& written = server.process().linesWritten();
    EXPECT_THAT(std::vector(written.begin() + 2, written.end()), ElementsAre(row.request, row.notification));
  }
}

TEST(AppServerRPCClientMessages, ThatCannotBeEncodedFailAloneAndLeaveNothingBehind) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    const JSONValue notFinite(std::numeric_limits<double>::infinity());
    EXPECT_THAT(server.told(server.start(client->sendRequest("a/b", notFinite))), StartsWith("other error: "));
    EXPECT_EQ(client->requestsInFlight(), 0U);
    server.answer("a/b", "1");
    EXPECT_EQ(server.told(server.start(client->sendRequest("a/b"))), "1");
  });
}

TEST(AppServerRPCClientMessages, FindTheirRequestsInAnyOrder) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    std::vector<std::shared_ptr<Outcome<JSONValue>>> answers;
    for (int request = 0; request < 3; ++request) answers.push_back(server.start(client->sendRequest("a/b")));
    server.write(
        "{\"id\":4,\"result\":\"c\"}\n{\"id\":2,\"result\":\"a\"}\n{\"id\":3,\"error\":{\"code\":1,\"message\":\"b\"}}"
        "\n");
    EXPECT_EQ(server.told(answers[0]), "\"a\"");
    EXPECT_EQ(server.told(answers[1]), "other error: App-server error 1: b");
    EXPECT_EQ(server.told(answers[2]), "\"c\"");
  });
}

TEST(AppServerRPCClientMessages, AreReadHoweverTheBytesCome) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    const auto answer = server.start(client->sendRequest("a/b"));
    for (const char* piece : {"{\"id\":2,\"res", "ult\":\"\xc3", "\xa9\"}\r", "\n"}) server.write(piece);
    EXPECT_EQ(server.told(answer), "\"\xc3\xa9\"");
  });
}

}  // namespace
