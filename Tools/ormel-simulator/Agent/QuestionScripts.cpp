#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "ormel-simulator/Agent/RequestScripts.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

JSONValue option(const char* label, const char* description) {
  return JSONValue::object({{"label", label}, {"description", description}});
}

JSONValue question(const char* id, const char* header, const char* text, const JSONValue& options) {
  return JSONValue::object({{"id", id},
                            {"header", header},
                            {"question", text},
                            {"isOther", true},
                            {"isSecret", false},
                            {"options", options}});
}

std::string answerTo(const std::optional<JSONValue>& result, const char* questionID) {
  const JSONValue given = result ? anyMember(anyMember(*result, "answers"), questionID) : JSONValue();
  const JSONValue answers = anyMember(given, "answers");
  const auto* texts = answers.arrayValue();
  std::string text;
  for (std::size_t place = 0; texts && place < texts->size(); ++place) {
    if (place > 0) text += " and ";
    text += (*texts)[place].stringValue().value_or("");
  }
  return text.empty() ? "nothing" : text;
}

}  // namespace

void playQuestions(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] {
    const JSONValue languages = JSONValue::array({option("C++", "Fast"), option("Python", "Short")});
    const JSONValue sizes = JSONValue::array({option("Small", "One file"), option("Large", "Many files")});
    JSONObjectBuilder members;
    members.set("itemId", turn.newItemID("questions")).set("isBlocking", true);
    members.set("questions",
                JSONValue::array({question("language", "Language", "Which language shall it be?", languages),
                                  question("size", "Size", "How large shall it be?", sizes)}));
    turn.ask("item/tool/requestUserInput", members, [&turn](const std::optional<JSONValue>& result) {
      turn.say("You chose: language " + answerTo(result, "language") + ", size " + answerTo(result, "size") + ".");
    });
  });
}

void playForm(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] {
    const JSONValue properties = JSONValue::object(
        {{"city", JSONValue::object({{"type", "string"}, {"title", "City"}})},
         {"days", JSONValue::object({{"type", "integer"}, {"title", "Days"}, {"minimum", 1}, {"maximum", 7}})}});
    JSONObjectBuilder members;
    members.set("serverName", "weather").set("mode", "form").set("message", "Where do you need the weather?");
    members.set("_meta", nullptr);
    members.set(
        "requestedSchema",
        JSONValue::object({{"type", "object"}, {"properties", properties}, {"required", JSONValue::array({"city"})}}));
    turn.ask("mcpServer/elicitation/request", members, [&turn](const std::optional<JSONValue>& result) {
      const std::string action = result ? textMember(*result, "action").value_or("") : "cancel";
      if (action != "accept") return turn.say("You did not fill in the form: " + action + ".");
      turn.say("The form says: " + anyMember(*result, "content").encode());
    });
  });
}

void playPermissions(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] {
    const JSONValue roots = JSONValue::array({turn.thread().choices.cwd});
    JSONObjectBuilder members;
    members.set("itemId", turn.newItemID("permissions")).set("reason", "You asked me to ask");
    members.set("cwd", turn.thread().choices.cwd);
    members.set("permissions",
                JSONValue::object({{"network", JSONValue::object({{"enabled", true}})},
                                   {"fileSystem", JSONValue::object({{"read", nullptr}, {"write", roots}})}}));
    turn.ask("item/permissions/requestApproval", members, [&turn](const std::optional<JSONValue>& result) {
      std::vector<std::string> granted;
      const JSONValue permissions = result ? anyMember(*result, "permissions") : JSONValue();
      for (const char* name : {"network", "fileSystem"}) {
        if (!anyMember(permissions, name).isNull()) granted.emplace_back(name);
      }
      if (granted.empty()) return turn.say("You granted nothing.");
      const std::string both = granted.size() == 2 ? granted[0] + " and " + granted[1] : granted[0];
      turn.say("You granted: " + both + ", for the " + textMember(*result, "scope").value_or("turn") + ".");
    });
  });
}

void playSignIn(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] {
    JSONObjectBuilder members;
    members.set("reason", "unauthorized").set("previousAccountId", "account-1");
    turn.ask("account/parlaneAuthTokens/refresh", members, [&turn](const std::optional<JSONValue>& result) {
      const auto account = result ? textMember(*result, "parlaneAccountId") : std::nullopt;
      if (!account) return turn.finish("failed", "You did not sign in");
      turn.say("You are signed in to the account " + *account + ".");
    });
  });
}

void playAttestation(AgentTurn& turn, const ScriptArgument&) {
  turn.then([&turn] {
    turn.ask("attestation/generate", {}, [&turn](const std::optional<JSONValue>& result) {
      const std::string token = result ? textMember(*result, "token").value_or("") : "";
      turn.say(token.empty() ? "You gave me no attestation." : "You gave me the attestation " + token + ".");
    });
  });
}

}  // namespace ormel::simulator
