// The first program of the README, with a check of what it prints.

#include <OrmelSDK/JSONValue.h>

#include <iostream>
#include <string>

int main() {
  const auto message = ormel::JSONValue::decode(R"({"method":"turn/started","params":{"turn":{"id":"t1"}}})");
  std::string id = "?";
  if (const auto* params = message.find("params")) {
    const ormel::JSONValue turn = *params->find("turn");
    id = turn.find("id")->stringValue().value_or("?");
  }
  std::cout << id << '\n';
  return id == "t1" ? 0 : 1;
}
