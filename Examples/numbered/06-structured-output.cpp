// Asks for an answer that a program can read: a JSON object of a given schema.
// Usage: 06-structured-output [SERVER]

#include <OrmelSDK/Ormel.h>

#include <iostream>

namespace {

using ormel::JSONValue;

std::map<std::string, JSONValue> citySchema() {
  const JSONValue properties = JSONValue::object(
      {{"city", JSONValue::object({{"type", "string"}})}, {"inhabitants", JSONValue::object({{"type", "integer"}})}});
  return {{"type", "object"},
          {"properties", properties},
          {"required", JSONValue::array({"city", "inhabitants"})},
          {"additionalProperties", false}};
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  ormel::TurnOptions turnOptions;
  turnOptions.outputSchema = citySchema();

  const ormel::Thread thread = ormel::Ormel(options).startThread();
  const ormel::Turn turn = thread.run("Name a large city, as json", turnOptions).get();

  const JSONValue answer = JSONValue::decode(turn.finalResponse);
  const JSONValue* city = answer.find("city");
  const JSONValue* inhabitants = answer.find("inhabitants");
  if (!city || !inhabitants) throw ormel::Error("The answer does not follow the schema: " + turn.finalResponse);
  std::cout << "city: " << city->stringValue().value_or("?") << '\n';
  std::cout << "inhabitants: " << inhabitants->intValue().value_or(0) << '\n';
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
