#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PermissionRecords.h"
#include "Support/CallRows.h"
#include "Support/ProcessResources.h"
#include "Support/RunTranscript.h"

// Lists that a session gathers from page to page, on real processes and pipes.
namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

using Words = std::vector<std::string>;

/// A server that shakes hands and then plays the rest.
SimulatorScenario playing(const std::string& rest) { return SimulatorScenario(handshake + rest); }

template <typename Element>
Words idsOf(const std::vector<Element>& elements) {
  Words ids;
  for (const Element& element : elements) {
    if constexpr (requires { element.id; }) {
      ids.push_back(element.id);
    } else {
      ids.push_back(element.name);
    }
  }
  return ids;
}

std::string element(const std::string& id) {
  return R"({"id":")" + id + R"(","name":")" + id +
         R"(","model":"m","displayName":"d","description":"d","hidden":false,"supportedReasoningEfforts":[],)"
         R"("defaultReasoningEffort":"low","inputModalities":[],"supportsPersonality":false,"isDefault":false,)"
         R"("tools":{},"resources":[],"resourceTemplates":[],"authStatus":"oAuth"})";
}

std::string page(const Words& ids, const std::optional<std::string>& nextCursor = std::nullopt) {
  std::string data;
  for (const std::string& id : ids) data += (data.empty() ? "" : ",") + element(id);
  return "{\"data\":[" + data + "]" + (nextCursor ? ",\"nextCursor\":\"" + *nextCursor + "\"" : "") + "}";
}

/// A page for each request, whatever it asks.
std::string answers(const std::string& method, const std::vector<std::string>& pages) {
  std::string statements;
  for (const std::string& each : pages) statements += "client asks " + method + "\nserver answers " + each + "\n";
  return statements;
}

Words appsOf(const OrmelControlSession& session, const ListAllAppsParams& params = ListAllAppsParams()) {
  return idsOf(session.listAllApps(params).get());
}

Words appsOf(const SimulatorScenario& scenario) {
  const auto session = ormelPlaying(scenario).makeControlSession();
  const Words ids = appsOf(session);
  session.close().get();
  EXPECT_THAT(scenario.failures(), IsEmpty());
  return ids;
}

/// The lines of all requests but those of handshakes.
Words linesOf(const SimulatorScenario& scenario) {
  Words lines;
  for (const std::string& line : scenario.receivedLines()) {
    if (line.find("\"initialize") == std::string::npos) lines.push_back(line);
  }
  return lines;
}

/// The params of those requests.
std::vector<JSONValue> paramsOf(const SimulatorScenario& scenario) {
  std::vector<JSONValue> all;
  for (const std::string& line : linesOf(scenario)) {
    const JSONValue message = JSONValue::decode(line);
    const JSONValue* params = message.find("params");
    all.push_back(params ? *params : JSONValue("without params"));
  }
  return all;
}

/// A list, by its method and the params of its pages. Those of the second page have the cursor "c" besides.
struct WalkRow {
  const char* method;
  const char* params;
  Words (*walk)(const OrmelControlSession&);
};

const WalkRow walks[] = {
    {"app/list", "{}", [](const OrmelControlSession& session) { return appsOf(session); }},
    {"app/list", R"({"threadId":"t1","limit":7,"forceRefetch":true})",
     [](const OrmelControlSession& session) {
       ListAllAppsParams params;
       params.threadID = "t1";
       params.limit = 7;
       params.forceRefetch = true;
       return appsOf(session, params);
     }},
    {"app/list", R"({"threadId":"","forceRefetch":false})",
     [](const OrmelControlSession& session) {
       ListAllAppsParams params;
       params.threadID = "";
       params.forceRefetch = false;
       return appsOf(session, params);
     }},
    {"model/list", R"({"includeHidden":false})",
     [](const OrmelControlSession& session) { return idsOf(session.listAllModels().get()); }},
    {"model/list", R"({"includeHidden":true})",
     [](const OrmelControlSession& session) {
       ListAllModelsParams params;
       params.includeHidden = true;
       return idsOf(session.listAllModels(params).get());
     }},
    {"permissionProfile/list", "{}",
     [](const OrmelControlSession& session) { return idsOf(session.listAllPermissionProfiles().get()); }},
    {"permissionProfile/list", R"({"cwd":"/w"})",
     [](const OrmelControlSession& session) {
       ListAllPermissionProfilesParams params;
       params.cwd = "/w";
       return idsOf(session.listAllPermissionProfiles(params).get());
     }},
    {"mcpServerStatus/list", "{}",
     [](const OrmelControlSession& session) { return idsOf(session.listAllMcpServerStatus().get()); }},
    {"mcpServerStatus/list", R"({"threadId":"t1","detail":"toolsAndAuthOnly","limit":2})",
     [](const OrmelControlSession& session) {
       ListAllMcpServerStatusParams params;
       params.threadID = "t1";
       params.detail = McpServerStatusDetail::toolsAndAuthOnly;
       params.limit = 2;
       return idsOf(session.listAllMcpServerStatus(params).get());
     }},
};

JSONValue withCursor(const JSONValue& params, const std::string& cursor) {
  std::vector<JSONMemberInit> members;
  for (const auto& [key, value] : *params.objectValue()) members.emplace_back(key, value);
  members.emplace_back("cursor", cursor);
  return JSONValue::object(members);
}

TEST(Paging, SendsTheSameParamsWithEachPageAndTheCursorFromTheSecondOn) {
  for (const WalkRow& row : walks) {
    SCOPED_TRACE(row.method + std::string(" ") + row.params);
    const auto scenario = playing(answers(row.method, {page({"a"}, "c"), page({"b"}, "d"), page({"c"})}));
    const auto session = ormelPlaying(scenario).makeControlSession();
    EXPECT_THAT(row.walk(session), ElementsAre("a", "b", "c"));
    session.close().get();
    const JSONValue first = JSONValue::decode(row.params);
    EXPECT_THAT(paramsOf(scenario), ElementsAre(first, withCursor(first, "c"), withCursor(first, "d")));
    EXPECT_EQ(scenario.processesStarted(), 1U);
    EXPECT_THAT(scenario.failures(), IsEmpty());
  }
}

TEST(Paging, AsksOnceForAListOfOnePage) {
  for (const WalkRow& row : walks) {
    SCOPED_TRACE(row.method + std::string(" ") + row.params);
    const auto scenario = playing(answers(row.method, {page({"a", "b"})}));
    const auto session = ormelPlaying(scenario).makeControlSession();
    EXPECT_THAT(row.walk(session), ElementsAre("a", "b"));
    session.close().get();
    EXPECT_THAT(paramsOf(scenario), ElementsAre(JSONValue::decode(row.params)));
  }
}

// Unlike one page of models, of which a call without choices is sent without params.
TEST(Paging, AlwaysSaysWhetherHiddenModelsAreListed) {
  const auto scenario = playing(answers("model/list", {page({}), page({})}));
  const Ormel ormel = ormelPlaying(scenario);
  EXPECT_THAT(ormel.listModels().get().data, IsEmpty());
  EXPECT_EQ(linesOf(scenario).back(), R"({"id":2,"method":"model/list"})");
  const auto again = playing(answers("model/list", {page({})}));
  const auto session = ormelPlaying(again).makeControlSession();
  EXPECT_THAT(session.listAllModels().get(), IsEmpty());
  EXPECT_EQ(linesOf(again).back(), R"({"id":2,"method":"model/list","params":{"includeHidden":false}})");
  session.close().get();
}

TEST(Paging, IsOverOnlyWithAPageWithoutANextCursor) {
  EXPECT_THAT(appsOf(playing(answers("app/list", {page({})}))), IsEmpty());
  EXPECT_THAT(appsOf(playing(answers("app/list", {R"({"data":[],"nextCursor":null})"}))), IsEmpty());
  EXPECT_THAT(appsOf(playing(answers("app/list", {page({}, "c"), page({"a"})}))), ElementsAre("a"));
  EXPECT_THAT(appsOf(playing(answers("app/list", {page({"a"}, "c"), page({}, "d"), page({"b"})}))),
              ElementsAre("a", "b"));
  const auto emptyCursor = playing(answers("app/list", {page({"a"}, ""), page({"b"})}));
  EXPECT_THAT(appsOf(emptyCursor), ElementsAre("a", "b"));
  EXPECT_EQ(linesOf(emptyCursor).back(), R"({"id":3,"method":"app/list","params":{"cursor":""}})");
}

TEST(Paging, KeepsWhatComesTwiceAndTheOrderInWhichItComes) {
  EXPECT_THAT(appsOf(playing(answers("app/list", {page({"c", "a", "c"}, "1"), page({"a", "b"}, "2"), page({"c"})}))),
              ElementsAre("c", "a", "c", "a", "b", "c"));
}

TEST(Paging, TakesAPageThatIsLongerThanItAskedFor) {
  const auto scenario = playing(answers("app/list", {page({"a", "b", "c"})}));
  const auto session = ormelPlaying(scenario).makeControlSession();
  ListAllAppsParams params;
  params.limit = 1;
  EXPECT_THAT(appsOf(session, params), ElementsAre("a", "b", "c"));
  session.close().get();
}

TEST(Paging, GathersManyPages) {
  const auto scenario = playing("repeat 500 times as i\nclient asks app/list\nserver answers " +
                                page({"a${i}"}, "c${i}") + "\nend\n" + answers("app/list", {page({"last"})}));
  const Words ids = appsOf(scenario);
  ASSERT_THAT(ids, SizeIs(501));
  EXPECT_EQ(ids[499], "a500");
  EXPECT_EQ(ids[500], "last");
  EXPECT_EQ(linesOf(scenario).back(), R"({"id":502,"method":"app/list","params":{"cursor":"c500"}})");
}

/// The end of a walk whose second page goes wrong.
struct FailedWalkRow {
  const char* secondPage;
  const char* failure;
};

TEST(Paging, TellsNothingButTheFailureOfAPageAndGivesItsServerUp) {
  const FailedWalkRow rows[] = {
      {"server answers with error {\"code\":-5,\"message\":\"stale cursor\"}",
       "other error: App-server error -5: stale cursor"},
      {"server answers {\"data\":[{\"id\":1}]}",
       "stream error: App-server decode error at data.Index 0.id: type mismatch for String: Expected String but found "
       "a "
       "number."},
      {"server answers {\"nextCursor\":\"c\"}", "stream error: App-server decode error at $: missing key 'data'"},
      {"server writes stderr \"out of memory\\n\"\nserver exits 3", "stream error: out of memory"},
      {"server writes raw \"[]\\n\"", "stream error: Unexpected non-object JSON from app-server"},
  };
  for (const FailedWalkRow& row : rows) {
    SCOPED_TRACE(row.secondPage);
    const auto scenario = playing("in run 1\n" + answers("app/list", {page({"a"}, "c")}) + "client asks app/list\n" +
                                  row.secondPage + "\nend\nin run 2\n" + answers("app/list", {page({"b"})}) + "end\n");
    const auto session = ormelPlaying(scenario).makeControlSession();
    EXPECT_THAT(failureOf([&] { appsOf(session); }), StartsWith(row.failure));
    EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
    EXPECT_THAT(appsOf(session), ElementsAre("b"));
    EXPECT_EQ(linesOf(scenario).back(), R"({"id":2,"method":"app/list","params":{}})");
    EXPECT_EQ(scenario.processesStarted(), 2U);
    session.close().get();
  }
}

TEST(Paging, EndsWithTheRequestThatIsUnderWayWhenItIsCancelled) {
  const auto scenario = playing("in run 1\n" + answers("app/list", {page({"a"}, "c")}) +
                                "client asks app/list\nclient closes input\nend\nin run 2\n" +
                                answers("app/list", {page({"b"})}) + "end\n");
  const auto session = ormelPlaying(scenario).makeControlSession();
  std::stop_source stop;
  const auto walk = startOn(productionScheduler(), session.listAllApps(), stop.get_token());
  ASSERT_TRUE(eventually([&] { return linesOf(scenario).size() == 2; }));
  stop.request_stop();
  walk->waitUntilSet();
  EXPECT_EQ(failureOf([&] { walk->take(); }), "cancelled");
  EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
  EXPECT_THAT(appsOf(session), ElementsAre("b"));
  session.close().get();
}

TEST(Paging, GoesOnWithAServerThatRepeatsACursorUntilItIsCancelled) {
  const auto scenario = playing("always answer app/list with " + page({"a"}, "same") + "\n");
  const auto session = ormelPlaying(scenario).makeControlSession();
  std::stop_source stop;
  const auto walk = startOn(productionScheduler(), session.listAllApps(), stop.get_token());
  ASSERT_TRUE(eventually([&] { return linesOf(scenario).size() > 20; }));
  EXPECT_FALSE(walk->isSet());
  stop.request_stop();
  walk->waitUntilSet();
  EXPECT_EQ(failureOf([&] { walk->take(); }), "cancelled");
  session.close().get();
  auto params = paramsOf(scenario);
  params.erase(params.begin());
  EXPECT_THAT(params, Each(JSONValue::decode(R"({"cursor":"same"})")));
}

TEST(Paging, EndsWithTheSessionThatIsClosed) {
  const auto scenario =
      playing(answers("app/list", {page({"a"}, "c")}) + "client asks app/list\nclient closes input\n");
  const auto session = ormelPlaying(scenario).makeControlSession();
  const auto walk = startOn(productionScheduler(), session.listAllApps());
  ASSERT_TRUE(eventually([&] { return linesOf(scenario).size() == 2; }));
  session.close().get();
  walk->waitUntilSet();
  EXPECT_EQ(failureOf([&] { walk->take(); }), "stream error: App-server RPC client terminated");
}

TEST(Paging, GoesOnWithoutTheSessionThatStartedIt) {
  const auto scenario = playing(answers("app/list", {page({"a"}, "c"), page({"b"})}));
  auto walk = ormelPlaying(scenario).makeControlSession().listAllApps();
  EXPECT_THAT(idsOf(walk.get()), ElementsAre("a", "b"));
  EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
}

TEST(Paging, LetsWalksAndOtherCallsRunAtTheSameTime) {
  std::string rules = "always answer thread/archive with {}\n";
  for (const std::string thread : {"t1", "t2"}) {
    const auto rule = [&](const std::string& cursor, const std::string& result) {
      rules += R"(always answer app/list {"threadId":")" + thread + R"(","cursor":")" + cursor + "\"} with " + result;
      rules += "\n";
    };
    rule("$absent", page({thread + "-a"}, thread + "-1"));
    rule(thread + "-1", page({thread + "-b"}, thread + "-2"));
    rule(thread + "-2", page({thread + "-c"}));
  }
  const auto scenario = playing(rules);
  const auto session = ormelPlaying(scenario).makeControlSession();
  for (int round = 0; round < 20; ++round) {
    std::vector<std::shared_ptr<Outcome<std::vector<AppInfo>>>> outcomes;
    for (const std::string thread : {"t1", "t2"}) {
      ListAllAppsParams params;
      params.threadID = thread;
      outcomes.push_back(startOn(productionScheduler(), session.listAllApps(params)));
    }
    session.archiveThread("t").get();
    for (const auto& outcome : outcomes) outcome->waitUntilSet();
    EXPECT_THAT(idsOf(outcomes[0]->take()), ElementsAre("t1-a", "t1-b", "t1-c"));
    EXPECT_THAT(idsOf(outcomes[1]->take()), ElementsAre("t2-a", "t2-b", "t2-c"));
  }
  EXPECT_EQ(scenario.processesStarted(), 1U);
  session.close().get();
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

// Both replies come in one read: the refusal costs the server before the page has been taken, and the next page is
// asked of another server, which never gave out the cursor.
TEST(Paging, GoesOnWithTheNextServerWhenAnotherCallHasCostItTheOneBefore) {
  const auto scenario = playing(R"(
    in run 1
      in any order
        client asks app/list as walk
        client asks thread/archive as other
      end
      in one write
        server answers other with error {"code": -5, "message": "no"}
        server answers walk with )" +
                                page({"a"}, "c") + R"(
      end
      client closes input
    end
    in run 2
      client asks app/list {"cursor": "c"}
      server answers )" + page({"b"}) +
                                R"(
    end
  )");
  const auto session = ormelPlaying(scenario).makeControlSession();
  const auto other = startOn(productionScheduler(), session.archiveThread("t1"));
  const auto walk = startOn(productionScheduler(), session.listAllApps());
  other->waitUntilSet();
  EXPECT_EQ(failureOf([&] { other->take(); }), "other error: App-server error -5: no");
  walk->waitUntilSet();
  EXPECT_THAT(idsOf(walk->take()), ElementsAre("a", "b"));
  EXPECT_EQ(scenario.processesStarted(), 2U);
  session.close().get();
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

// The late failure of a walk whose server was given up must not cost the session's next one.
TEST(Paging, LeavesTheNextServerAloneWhenItFailsLate) {
  const auto scenario = playing(R"(
    in run 1
      in any order
        client asks app/list
        client asks thread/archive as other
      end
      server answers other with error {"code": -5, "message": "no"}
      client closes input
    end
    in run 2
      always answer thread/archive with {}
      client closes input
    end
  )");
  const auto session = ormelPlaying(scenario).makeControlSession();
  const auto walk = startOn(productionScheduler(), session.listAllApps());
  EXPECT_EQ(failureOf([&] { session.archiveThread("t1").get(); }), "other error: App-server error -5: no");
  session.archiveThread("t2").get();
  walk->waitUntilSet();
  EXPECT_EQ(failureOf([&] { walk->take(); }), "stream error: App-server RPC client terminated");
  session.archiveThread("t3").get();
  EXPECT_EQ(scenario.processesStarted(), 2U);
  session.close().get();
}

}  // namespace
