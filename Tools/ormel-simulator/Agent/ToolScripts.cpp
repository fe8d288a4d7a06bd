#include <optional>
#include <utility>
#include <vector>

#include "ormel-simulator/Agent/JSONMembers.h"
#include "ormel-simulator/Agent/RequestScripts.h"
#include "ormel-simulator/Agent/SchemaExample.h"

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
  addTools(tools, thread.dynamicTools, std::nullopt);
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

}  // namespace ormel::simulator
