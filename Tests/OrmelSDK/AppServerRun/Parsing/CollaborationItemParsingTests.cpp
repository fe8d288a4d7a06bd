#include "OrmelSDK/AppServerRun/Parsing/CollaborationItemParsing.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "Support/ParsedItems.h"

namespace {

using namespace ormel;
using tests::parsedAs;
using States = std::map<std::string, CollabAgentState>;

CollabAgentToolCallItem call(const std::string& members) {
  return parsedAs<CollabAgentToolCallItem>(R"({"type":"collabAgentToolCall","id":"c")" + members + "}");
}

std::optional<CollabAgentState> state(std::string_view text) {
  return detail::collabAgentState(JSONValue::decode(text));
}

const CollabAgentState running{CollabAgentStatus::running, {}};
const CollabAgentState stopped{CollabAgentStatus::shutdown, {}};

TEST(ParseCollabAgentToolCall, ReadsEveryField) {
  const auto item = call(R"(,"tool":"spawn_agent","status":"interrupted","senderThreadId":"s","sender_thread_id":"x",
      "receiverThreadIds":["a",1,"b"],"receiver_thread_ids":["x"],"prompt":"p","model":"m","reasoningEffort":"odd",
      "reasoning_effort":"x","agentsStates":{"a":{"status":"running","message":"hi"}},"agents_states":{"x":"closed"})");
  EXPECT_EQ(item, (CollabAgentToolCallItem{"c",
                                           CollabAgentTool::spawnAgent,
                                           CollabAgentToolCallStatus::interrupted,
                                           "s",
                                           {"a", "b"},
                                           "p",
                                           "m",
                                           ModelReasoningEffort("odd"),
                                           {{"a", {CollabAgentStatus::running, "hi"}}}}));
}

TEST(ParseCollabAgentToolCall, TakesDefaultsForWhatIsMissingOrMalformed) {
  const CollabAgentToolCallItem expected{
      "c", CollabAgentTool::unknown, CollabAgentToolCallStatus::failed, "", {}, {}, {}, {}, {}};
  EXPECT_EQ(call(""), expected);
  EXPECT_EQ(call(R"(,"tool":1,"status":2,"senderThreadId":3,"receiverThreadIds":"x","prompt":4,"model":5,
      "reasoningEffort":6,"agentsStates":7,"agentStatus":8)"),
            expected);
}

TEST(ParseCollabAgentToolCall, ReadsTheOtherSpellings) {
  const auto item = call(R"(,"senderThreadId":null,"sender_thread_id":"s","receiver_thread_ids":["r"],
      "reasoning_effort":"high","agentsStates":null,"agents_states":{"r":"running"})");
  EXPECT_EQ(item.senderThreadId, "s");
  EXPECT_EQ(item.receiverThreadIds, std::vector<std::string>{"r"});
  EXPECT_EQ(item.reasoningEffort, ModelReasoningEffort::high);
  EXPECT_EQ(item.agentsStates, (States{{"r", running}}));
}

TEST(ParseCollabAgentToolCall, MakesAListOfASingleReceiver) {
  const std::string fourth = R"("new_thread_id":"4")";
  const std::string third = R"("newThreadId":"3",)" + fourth;
  const std::string second = R"("receiver_thread_id":"2",)" + third;
  const std::string first = R"("receiverThreadId":"1",)" + second;
  using List = std::vector<std::string>;
  EXPECT_EQ(call("," + fourth).receiverThreadIds, List{"4"});
  EXPECT_EQ(call("," + third).receiverThreadIds, List{"3"});
  EXPECT_EQ(call("," + second).receiverThreadIds, List{"2"});
  EXPECT_EQ(call("," + first).receiverThreadIds, List{"1"});
  EXPECT_EQ(call(R"(,"receiverThreadIds":[5],"receiverThreadId":7,)" + third).receiverThreadIds, List{"3"});
  EXPECT_EQ(call(R"(,"receiverThreadIds":["r"],)" + first).receiverThreadIds, List{"r"});
}

TEST(ParseCollabAgentToolCall, ReadsStatesFromAList) {
  EXPECT_EQ(call(R"(,"agentsStates":[{"threadId":"a","thread_id":"x","status":"running"},
      {"threadId":1,"thread_id":"b","state":"closed"},{"status":"running"},{"threadId":"c"},"running",null])")
                .agentsStates,
            (States{{"a", running}, {"b", stopped}}));
}

TEST(ParseCollabAgentToolCall, SkipsMembersWithoutAState) {
  EXPECT_EQ(call(R"(,"agentsStates":{"a":"running","b":{"message":"m"},"c":null,"d":{"state":"closed"}})").agentsStates,
            (States{{"a", running}, {"d", stopped}}));
}

TEST(ParseCollabAgentToolCall, GivesACommonStateToEveryReceiver) {
  const auto single = call(R"(,"newThreadId":"n","agentStatus":"closed")");
  EXPECT_EQ(single.receiverThreadIds, std::vector<std::string>{"n"});
  EXPECT_EQ(single.agentsStates, (States{{"n", stopped}}));
  EXPECT_EQ(call(R"(,"receiverThreadIds":["a","b"],"agent_status":{"status":"running"},"agentId":"x")").agentsStates,
            (States{{"a", running}, {"b", running}}));
}

TEST(ParseCollabAgentToolCall, GivesACommonStateToTheAgentWhenThereIsNoReceiver) {
  EXPECT_EQ(call(R"(,"agentStatus":"closed","agentId":"a","agent_id":"x")").agentsStates, (States{{"a", stopped}}));
  EXPECT_EQ(call(R"(,"agentStatus":"closed","agentId":1,"agent_id":"a")").agentsStates, (States{{"a", stopped}}));
  EXPECT_EQ(call(R"(,"agentStatus":"closed")").agentsStates, States());
  EXPECT_EQ(call(R"(,"agentStatus":{"message":"m"},"agentId":"a")").agentsStates, States());
}

TEST(ParseCollabAgentToolCall, PrefersListedStatesToACommonOne) {
  const std::string common = R"(,"receiverThreadIds":["r"],"agentStatus":"closed")";
  EXPECT_EQ(call(common + R"(,"agentsStates":{"a":"running"})").agentsStates, (States{{"a", running}}));
  EXPECT_EQ(call(common + R"(,"agentsStates":{"a":5})").agentsStates, (States{{"r", stopped}}));
  EXPECT_EQ(call(common + R"(,"agentsStates":[])").agentsStates, (States{{"r", stopped}}));
}

TEST(CollabAgentState, IsReadFromAWordOrAnObject) {
  EXPECT_EQ(state(R"("Closed")"), stopped);
  EXPECT_EQ(state(R"({"status":"running","state":"closed","message":"m"})"),
            (CollabAgentState{CollabAgentStatus::running, "m"}));
  EXPECT_EQ(state(R"({"status":1,"state":"closed","message":2})"), stopped);
  EXPECT_EQ(state(R"({"status":"weird"})"), (CollabAgentState{CollabAgentStatus::unknown, {}}));
}

TEST(CollabAgentState, IsAbsentForAnythingElse) {
  for (const char* text : {"null", "5", "true", "[]", "{}", R"({"message":"m"})", R"({"status":null})"}) {
    EXPECT_EQ(state(text), std::nullopt) << text;
  }
}

TEST(ParseSubAgentActivity, KeepsTheServersWord) {
  EXPECT_EQ(parsedAs<SubAgentActivityItem>(R"({"type":"subAgentActivity","id":"s","kind":"interacted",
      "agentThreadId":"t","agent_thread_id":"x","agentPath":"p","agent_path":"x"})"),
            (SubAgentActivityItem{"s", SubAgentActivityKind::interacted, "t", "p"}));
  EXPECT_EQ(parsedAs<SubAgentActivityItem>(R"({"type":"subAgentActivity","id":"s","kind":"Started",
      "agentThreadId":1,"agent_thread_id":"t","agent_path":"p"})"),
            (SubAgentActivityItem{"s", SubAgentActivityKind("Started"), "t", "p"}));
  EXPECT_EQ(parsedAs<SubAgentActivityItem>(R"({"type":"subAgentActivity","id":"s","kind":5})"),
            (SubAgentActivityItem{"s", SubAgentActivityKind(""), {}, {}}));
}

}  // namespace
