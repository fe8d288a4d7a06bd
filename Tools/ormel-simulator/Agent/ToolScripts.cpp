#include <optional>
#include <utility>
#include <vector>

#include "ormel-simulator/Agent/RequestScripts.h"
#include "ormel-simulator/Agent/SchemaExample.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

struct Tool {
  std::optional<std::string> namespaceName;
  std::string name;
  JSONValue inputSchema;
};

void addTools(std::vector<Tool>& tools, const JSONValue& specs, const std::optional<std::string>& namespaceName) {
  const auto* elements = specs.arrayValue();
  if (!elements) return;
  for (const JSONValue& spec : *elements) {
    const std::string name = textMember(spec, "name").value_or("");
    if (textMember(spec, "type") == "namespace") {
      addTools(tools, anyMember(spec, "tools"), name);
    } else {
      tools.push_back({namespaceName, name, anyMember(spec, "inputSchema")});
    }
  }
}

std::optional<Tool> chosenTool(const AgentThread& thread, const std::string& name) {
  std::vector<Tool> tools;
  addTools(tools, thread.choices.dynamicTools, std::nullopt);
  for (const Tool& tool : tools) {
    if (tool.name == name) return tool;
  }
  if (tools.empty()) return std::nullopt;
  return tools.front();
}

struct ToolCall {
  std::string id;
  Tool tool;
  JSONValue arguments;

  JSONObjectBuilder item(const char* status) const {
    JSONObjectBuilder members;
    members.set("type", "dynamicToolCall").set("id", id).set("status", status).set("tool", tool.name);
    return members.set("namespace", tool.namespaceName).set("arguments", arguments);
  }
};

std::string resultText(const JSONValue& contentItems) {
  std::string text;
  const auto* parts = contentItems.arrayValue();
  for (std::size_t place = 0; parts && place < parts->size(); ++place) {
    if (place > 0) text += ' ';
    text += textMember((*parts)[place], "text").value_or("(an image)");
  }
  return text;
}

void endToolCall(AgentTurn& turn, const ToolCall& call, const std::optional<JSONValue>& result) {
  const bool success = result && flagMember(*result, "success");
  const JSONValue content = result ? anyMember(*result, "contentItems") : JSONValue::array();
  JSONObjectBuilder item = call.item(success ? "completed" : "failed");
  turn.completeItem(item.set("contentItems", content).set("success", success).set("durationMs", 5));
  turn.say("The tool " + call.tool.name + (success ? " says: " : " failed: ") + resultText(content));
}

/// A call of a tool of an MCP server, which the application only sees.
JSONObjectBuilder lookUpItem(const std::string& id, const std::string& words, const char* status) {
  JSONObjectBuilder members;
  members.set("type", "mcpToolCall").set("id", id).set("server", "encyclopedia").set("tool", "look_up");
  return members.set("status", status).set("arguments", JSONValue::object({{"words", words}}));
}

}  // namespace

void playTool(AgentTurn& turn, const ScriptArgument& argument) {
  const std::optional<Tool> tool = chosenTool(turn.thread(), argument.word);
  if (!tool) return turn.say("You have given me no tool.");
  const ToolCall call{turn.newItemID("tool"), *tool, schemaExample(tool->inputSchema, turn.prompt())};
  turn.then([&turn, call] {
    turn.startItem(call.item("inProgress"));
    JSONObjectBuilder members;
    members.set("callId", call.id).set("tool", call.tool.name).set("namespace", call.tool.namespaceName);
    turn.ask("item/tool/call", members.set("arguments", call.arguments),
             [&turn, call](const std::optional<JSONValue>& result) { endToolCall(turn, call, result); });
  });
}

void playSearch(AgentTurn& turn, const ScriptArgument& argument) {
  JSONObjectBuilder item;
  item.set("type", "webSearch").set("id", turn.newItemID("search")).set("query", argument.line);
  turn.then([&turn, item] { turn.startItem(item); });
  turn.then([&turn, item] { turn.completeItem(item); });
  turn.say("The web knows much about \"" + argument.line + "\".");
}

void playLookUp(AgentTurn& turn, const ScriptArgument& argument) {
  const std::string id = turn.newItemID("call");
  const std::string words = argument.line;
  turn.then([&turn, id, words] { turn.startItem(lookUpItem(id, words, "inProgress")); });
  for (const char* progress : {"volume 1", "volume 2"}) {
    turn.then([&turn, id, progress] {
      JSONObjectBuilder members;
      turn.notify("item/mcpToolCall/progress", members.set("itemId", id).set("message", progress));
    });
  }
  turn.then([&turn, id, words] {
    const JSONValue text = JSONValue::object({{"type", "text"}, {"text", words + " is in volume 2"}});
    JSONObjectBuilder item = lookUpItem(id, words, "completed");
    turn.completeItem(item.set("result", JSONValue::object({{"content", JSONValue::array({text})}})));
  });
  turn.say("I found it: " + words + " is in volume 2.");
}

}  // namespace ormel::simulator
