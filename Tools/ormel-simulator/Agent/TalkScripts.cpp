#include "ormel-simulator/Agent/TalkScripts.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Agent/TurnScripts.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

constexpr std::array planSteps = {"Read the message", "Think of an answer", "Say it"};

void reportPlan(AgentTurn& turn, std::size_t done) {
  std::vector<JSONValue> steps;
  for (std::size_t place = 0; place < planSteps.size(); ++place) {
    const char* status = place < done ? "completed" : place == done ? "inProgress" : "pending";
    steps.push_back(JSONValue::object({{"step", planSteps.at(place)}, {"status", status}}));
  }
  JSONObjectBuilder members;
  turn.notify("turn/plan/updated", members.set("explanation", nullptr).set("plan", JSONValue::array(steps)));
}

JSONObjectBuilder reasoningItem(const std::string& id, const std::vector<JSONValue>& summary) {
  JSONObjectBuilder item;
  item.set("type", "reasoning").set("id", id).set("summary", JSONValue::array(summary));
  return item.set("content", JSONValue::array());
}

void think(AgentTurn& turn, const std::string& thought) {
  const std::string id = turn.newItemID("reasoning");
  turn.then([&turn, id] { turn.startItem(reasoningItem(id, {})); });
  for (const std::string& piece : wordPieces(thought)) {
    turn.then([&turn, id, piece] {
      JSONObjectBuilder members;
      members.set("itemId", id).set("delta", piece).set("summaryIndex", 0);
      turn.notify("item/reasoning/summaryTextDelta", members);
    });
  }
  turn.then([&turn, id, thought] { turn.completeItem(reasoningItem(id, {thought})); });
}

std::string opening(const std::string& prompt) {
  if (prompt.empty()) return "You said nothing.";
  if (prompt.ends_with('?')) return "You ask: \"" + prompt + "\". Nobody knows for sure, but I would say yes.";
  return "You said: \"" + prompt + "\". I have read it with care.";
}

std::string recollection(const std::vector<std::string>& earlier) {
  if (earlier.empty()) return "";
  std::string text = " You asked before: ";
  for (const std::string& prompt : earlier) {
    if (&prompt != &earlier.front()) text += ", ";
    text += "\"" + prompt + "\"";
  }
  return text + ".";
}

/// The words of the messages among the items.
std::string injectedKnowledge(const std::vector<JSONValue>& items) {
  std::string text;
  for (const JSONValue& item : items) {
    const JSONValue content = anyMember(item, "content");
    const auto* parts = content.arrayValue();
    if (!parts) continue;
    for (const JSONValue& part : *parts) {
      const auto words = textMember(part, "text");
      if (words) text += (text.empty() ? "\"" : ", \"") + *words + "\"";
    }
  }
  return text.empty() ? "" : " I was told besides: " + text + ".";
}

std::string plainAnswer(AgentTurn& turn) {
  const std::vector<std::string> earlier = turn.earlierPrompts();
  std::string text = opening(turn.prompt()) + recollection(earlier);
  text += injectedKnowledge(turn.thread().injectedItems);
  if (const auto& instructions = turn.thread().choices.developerInstructions)
    text += " My instructions are: \"" + *instructions + "\".";
  if (earlier.empty()) text += " Say \"run ls\", \"edit notes.txt\" or \"ask\" to see more of me.";
  return text;
}

std::string reviewSubject(const JSONValue& target) {
  const std::string type = textMember(target, "type").value_or("");
  if (type == "baseBranch") return "changes against " + textMember(target, "branch").value_or("");
  if (type == "commit") return "commit " + textMember(target, "sha").value_or("");
  if (type == "custom") return textMember(target, "instructions").value_or("");
  return "uncommitted changes";
}

JSONObjectBuilder textItem(const char* type, const std::string& id, const char* key, const std::string& text) {
  JSONObjectBuilder item;
  return item.set("type", type).set("id", id).set(key, text);
}

void showAtOnce(AgentTurn& turn, JSONObjectBuilder item) {
  turn.then([&turn, item = std::move(item)] {
    turn.startItem(item);
    turn.completeItem(item);
  });
}

}  // namespace

void playPlainAnswer(AgentTurn& turn) {
  turn.then([&turn] { reportPlan(turn, 0); });
  think(turn, "The user wants an answer. It should be short, and mention what was said before.");
  turn.then([&turn] { reportPlan(turn, 2); });
  turn.say(plainAnswer(turn));
  turn.then([&turn] { reportPlan(turn, planSteps.size()); });
}

void playFailure(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] { turn.finish("failed", "The turn failed, as you asked"); });
}

void playError(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] {
    JSONObjectBuilder members;
    members.set("error", JSONValue::object({{"message", "The model could not be reached"}})).set("willRetry", true);
    turn.notify("error", members);
  });
  turn.say("There was an error, but I tried again and am here.");
}

void playWarning(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] {
    JSONObjectBuilder members;
    turn.notify("warning", members.set("message", "This is only a simulation"));
  });
  turn.say("You have been warned.");
}

void playSlowAnswer(AgentTurn& turn, const ScriptArgument&) {
  // Without any pause it would flood the client.
  const milliseconds pause = std::max(turn.pace(), milliseconds(5));
  turn.then([&turn, pause] {
    turn.sayForever(pause, [count = 0]() mutable {
      ++count;
      return std::string(count == 1 ? "" : " ") + "This is thought " + std::to_string(count) + ".";
    });
  });
}

void playCrash(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] { turn.crash("ormel-simulator: the agent crashed, as you asked\n", 3); });
}

void playJSONAnswer(AgentTurn& turn, const ScriptArgument&) { turn.sayJSON(); }

void playReview(AgentTurn& turn, const JSONValue& target) {
  const std::string subject = reviewSubject(target);
  showAtOnce(turn, textItem("enteredReviewMode", turn.newItemID("review"), "review", subject));
  think(turn, "I look at the " + subject + ".");
  const std::string findings = "Reviewed the " + subject + ": one remark. The names could be shorter.";
  showAtOnce(turn, textItem("exitedReviewMode", turn.newItemID("review"), "review", findings));
  turn.say(findings);
}

void playCompaction(AgentTurn& turn) {
  JSONObjectBuilder item;
  showAtOnce(turn, item.set("type", "contextCompaction").set("id", turn.newItemID("compaction")));
  turn.then([&turn] { turn.notify("thread/compacted", {}); });
}

}  // namespace ormel::simulator
