// Lends the agent a tool that this program carries out.
// Usage: 04-dynamic-tools [SERVER]

#include <OrmelSDK/Ormel.h>

#include <iostream>
#include <stdexcept>

namespace {

using ormel::JSONValue;

JSONValue numberSchema() { return JSONValue::object({{"type", "number"}}); }

// The agent is told of an exception that it throws, and the turn goes on.
ormel::DynamicToolResult add(const ormel::DynamicToolCallContext& call) {
  const JSONValue* left = call.arguments.find("left");
  const JSONValue* right = call.arguments.find("right");
  if (!left || !right || !left->numberValue() || !right->numberValue())
    throw std::invalid_argument("Two numbers, please");
  const JSONValue sum(*left->numberValue() + *right->numberValue());
  return {{ormel::DynamicToolCallOutputContentItem::inputText("The sum is " + sum.encode())}, true};
}

ormel::DynamicTool addTool() {
  ormel::DynamicToolSpec spec;
  spec.name = "add";
  spec.description = "Adds two numbers";
  spec.inputSchema =
      JSONValue::object({{"type", "object"},
                         {"properties", JSONValue::object({{"left", numberSchema()}, {"right", numberSchema()}})},
                         {"required", JSONValue::array({"left", "right"})}});
  return {spec, add};
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  ormel::ThreadOptions threadOptions;
  threadOptions.dynamicTools = {addTool()};

  const ormel::Thread thread = ormel::Ormel(options).startThread(threadOptions);
  std::cout << thread.run("use tool add").get().finalResponse << '\n';
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
