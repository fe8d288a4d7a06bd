#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignLines.h"

#include <array>
#include <string_view>
#include <utility>

namespace ormel::testing {

namespace {

using Members = std::vector<std::pair<std::string, JSONValue>>;

/// The ids as the server may give them: of the turn, of others, in either spelling, in part, of a wrong type, or none.
JSONValue about(SimulatedScheduler& scheduler, const LineIDs& ids, const Members& members) {
  JSONObjectBuilder params;
  const auto kind = scheduler.choose(10);
  const bool isForeignThread = kind == 5 || kind == 6;
  const bool isForeignTurn = kind == 5 || kind == 7;
  const JSONValue threadID(isForeignThread ? ids.foreignThreadID : ids.threadID);
  const JSONValue turnID(isForeignTurn ? ids.foreignTurnID : ids.turnID);
  const bool isSnakeCase = scheduler.choose(4) == 0;
  if (kind != 8) params.set(isSnakeCase ? "thread_id" : "threadId", threadID);
  if (kind != 8 && kind != 6) params.set(isSnakeCase ? "turn_id" : "turnId", turnID);
  if (kind == 9 && isSnakeCase) params.set("threadId", 7);
  if (kind == 9 && !isSnakeCase) params.set("thread_id", ids.foreignThreadID);
  for (const auto& [key, value] : members) params.set(key, value);
  return params.build();
}

JSONValue item(const char* type, const std::string& id, Members members) {
  JSONObjectBuilder object;
  object.set("type", type).set("id", id);
  for (const auto& [key, value] : members) object.set(key, value);
  return object.build();
}

JSONValue planEntries(SimulatedScheduler& scheduler) {
  const JSONValue first = JSONValue::object({{"step", "one"}, {"status", "completed"}});
  const JSONValue second =
      JSONValue::object({{"step", "two"}, {"status", scheduler.choose(2) == 0 ? "pending" : "completed"}});
  return JSONValue::array({first, second});
}

JSONValue wordOfTurn(SimulatedScheduler& scheduler, const LineIDs& ids) {
  const auto say = [&](std::string_view method, const Members& members) {
    return notification(method, about(scheduler, ids, members));
  };
  const JSONValue delta("d" + std::to_string(scheduler.choose(10)));
  const std::string id = "x-" + std::to_string(scheduler.choose(3));
  switch (scheduler.choose(20)) {
    case 0:
      return say("item/started", {{"item", item("agentMessage", id, {{"text", ""}})}, {"startedAtMs", 12}});
    case 1:
      return say("item/agentMessage/delta", {{"itemId", id}, {"delta", delta}});
    case 2:
      return say("item/started", {{"item", item("commandExecution", id, {{"command", "make"}})}});
    case 3:
      return say("item/commandExecution/outputDelta", {{"itemId", id}, {"delta", delta}});
    case 4: {
      const JSONValue done = item("commandExecution", id, {{"aggregatedOutput", delta}, {"status", "completed"}});
      return say("item/completed", {{"item", done}, {"completedAtMs", 34}});
    }
    case 5:
      return say("item/reasoning/textDelta", {{"itemId", id}, {"delta", delta}});
    case 6: {
      const JSONValue texts = JSONValue::array({JSONValue("s"), JSONValue("t")});
      return say("item/updated", {{"item", item("reasoning", id, {{"summary", texts}, {"content", texts}})}});
    }
    case 7:
      return say("item/plan/delta", {{"itemId", id}, {"delta", delta}});
    case 8: {
      const JSONValue entries = planEntries(scheduler);
      const bool isOurs = scheduler.choose(2) == 0;
      const JSONValue params = JSONValue::object({{"threadId", isOurs ? ids.threadID : ids.foreignThreadID},
                                                  {"turnId", isOurs ? ids.turnID : ids.foreignTurnID},
                                                  {"plan", entries}});
      return notification("turn/plan/updated", params);
    }
    case 9: {
      const JSONValue last = JSONValue::object(
          {{"inputTokens", static_cast<int>(scheduler.choose(9))}, {"cachedInputTokens", 2}, {"outputTokens", 3}});
      return say("thread/tokenUsage/updated", {{"tokenUsage", JSONValue::object({{"last", last}})}});
    }
    case 10:
      return say("error", {{"message", "trouble"}});
    case 11:
      return say("warning", {{"message", "careful"}});
    case 12:
      return notification("thread/goal/cleared", JSONValue::object({{"threadId", ids.foreignThreadID}}));
    case 13: {
      const JSONValue change = JSONValue::object({{"path", "a.txt"}, {"kind", "add"}});
      return say("item/fileChange/patchUpdated", {{"itemId", id}, {"changes", JSONValue::array({change})}});
    }
    case 14:
      return say("item/started", {{"item", item("mcpToolCall", id, {{"status", "inProgress"}})}});
    case 15:
      return say("item/mcpToolCall/progress", {{"itemId", id}, {"message", delta}});
    case 16:
      return notification("thread/context_compacted", JSONValue::object({{"id", id}}));
    case 17:
      return say("somethingElse/new", {{"itemId", id}});
    case 18: {
      const bool isOurs = scheduler.choose(2) == 0;
      const JSONValue thread = JSONValue::object({{"id", isOurs ? ids.threadID : ids.foreignThreadID}});
      return notification("thread/started", JSONValue::object({{"thread", thread}}));
    }
    default: {
      // Answers to what was never asked.
      const JSONValue answered = scheduler.choose(2) == 0 ? JSONValue(4711) : JSONValue(std::to_string(1));
      return JSONValue::object({{"id", answered}, {"result", JSONValue::object()}});
    }
  }
}

}  // namespace

JSONValue notification(std::string_view method, const JSONValue& params) {
  return JSONValue::object({{"method", method}, {"params", params}});
}

JSONValue turnStarted(const std::string& threadID, const std::string& turnID, int window) {
  const JSONValue turn = JSONValue::object({{"id", turnID}, {"modelContextWindow", window}});
  return notification("turn/started", JSONValue::object({{"threadId", threadID}, {"turn", turn}}));
}

JSONValue turnCompleted(const std::string& threadID, const JSONValue& turn) {
  return notification("turn/completed", JSONValue::object({{"threadId", threadID}, {"turn", turn}}));
}

std::vector<JSONValue> wordsOfTurn(SimulatedScheduler& scheduler, const LineIDs& ids) {
  std::vector<JSONValue> words;
  for (auto count = 1 + scheduler.choose(10); count > 0; --count) words.push_back(wordOfTurn(scheduler, ids));
  return words;
}

std::vector<JSONValue> decoysOfTurn(SimulatedScheduler& scheduler, const LineIDs& ids, bool isCompaction) {
  const JSONValue ours = JSONValue::object({{"id", ids.turnID}, {"status", "completed"}, {"modelContextWindow", 667}});
  const JSONValue others = JSONValue::object({{"id", ids.foreignTurnID}, {"status", "failed"}});
  std::vector<JSONValue> decoys;
  for (auto count = 1 + scheduler.choose(3); count > 0; --count) {
    const char* method = scheduler.choose(2) == 0 ? "turn/started" : "turn/completed";
    switch (scheduler.choose(4)) {
      case 0:
        decoys.push_back(notification(method, JSONValue::object({{"threadId", ids.foreignThreadID}, {"turn", ours}})));
        break;
      case 1:
        decoys.push_back(notification(method, JSONValue::object({{"thread_id", ids.foreignThreadID}, {"turn", ours}})));
        break;
      case 2:
        decoys.push_back(notification(method, JSONValue::object({{"turn", others}})));
        break;
      default:
        // A compaction would take the start for that of its own turn.
        if (isCompaction) break;
        decoys.push_back(notification(method, JSONValue::object({{"threadId", ids.threadID}, {"turn", others}})));
    }
  }
  return decoys;
}

const std::vector<BrokenLine>& brokenLines() {
  static const std::vector<BrokenLine> lines = {
      {"{not json\n", "App-server decode error at "},
      {"[]\n", "Unexpected non-object JSON from app-server"},
      {"{}\n", "Unexpected app-server protocol object"},
      {"\"text\"\n", "Unexpected non-object JSON from app-server"},
      {"{\"method\":\"\"}\n", "Invalid app-server JSON-RPC method"},
      {"{\"method\":\"\",\"id\":1}\n", "Invalid app-server JSON-RPC method"},
      {"{\"method\":7}\n", "Invalid app-server JSON-RPC method"},
      {"{\"method\":\"warning\",\"id\":null}\n", "Invalid app-server JSON-RPC request id"},
      {"{\"type\":\"error\",\"message\":\"bare\"}\n", "bare"},
      {"{\"type\":\"error\",\"error\":{\"message\":\"bare\"},\"message\":\"no\"}\n", "bare"},
      {"{\"type\":\"error\",\"error\":\"bare\"}\n", "bare"},
      {"{\"type\":\"error\",\"id\":1}\n", "Unknown app-server error"},
      {"{\"id\":1,\"result\":1,\"error\":{}}\n", "Invalid app-server JSON-RPC response"},
      {"{\"id\":1}\n", "Invalid app-server JSON-RPC response"},
      {"{\"id\":1,\"error\":\"text\"}\n", "Invalid app-server JSON-RPC response"},
      {"{\"id\":null,\"result\":1}\n", "Unexpected app-server protocol object"},
      {"{\"id\":{},\"result\":1}\n", "Unexpected app-server protocol object"},
      {"{\"result\":1}\n", "Unexpected app-server protocol object"},
  };
  return lines;
}

const std::vector<BrokenLine>& faultyNotifications() {
  static const std::vector<BrokenLine> lines = {
      {"{\"method\":\"turn/started\",\"params\":{\"turn\":{\"id\":\"\"}}}", "turn/started missing turn identity"},
      {"{\"method\":\"turn/started\"}", "turn/started missing turn identity"},
      {"{\"method\":\"turn/completed\",\"params\":{}}", "turn/completed missing turn payload"},
      {"{\"method\":\"turn/completed\",\"params\":{\"turn\":{}}}", "turn/completed missing coordinator turn identity"},
      {"{\"method\":\"serverRequest/resolved\",\"params\":{}}", "serverRequest/resolved missing requestId"},
      {"{\"method\":\"thread/goal/cleared\",\"params\":{}}", "thread/goal/cleared missing threadId"},
  };
  return lines;
}

}  // namespace ormel::testing
