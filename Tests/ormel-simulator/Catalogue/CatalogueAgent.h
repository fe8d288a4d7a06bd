#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "ormel-simulator/Agent/RawAgent.h"

namespace ormel::simulator {

/// The agent, asked with params as JSON texts.
class CatalogueAgent : public RawAgent {
 public:
  static constexpr int endlessPace = 60'000;

  /// Without a state, the agent forgets.
  explicit CatalogueAgent(const std::string& state = "", int pace = 0) : RawAgent(pace, state) { initialize(); }
  explicit CatalogueAgent(std::vector<std::string> environment) : RawAgent(std::move(environment)) { initialize(); }

  static JSONObjectBuilder paramsFrom(std::string_view json) {
    JSONObjectBuilder params;
    const JSONValue decoded = JSONValue::decode(json);
    for (const auto& [key, value] : *decoded.objectValue()) params.set(key, value);
    return params;
  }

  JSONValue get(const std::string& method, std::string_view params = "{}") {
    return result(method, paramsFrom(params));
  }

  template <typename Record>
  Record read(const std::string& method, std::string_view params = "{}") {
    return decode<Record>(get(method, params));
  }

  std::string fault(const std::string& method, std::string_view params = "{}") {
    return refusal(method, paramsFrom(params));
  }

  /// Logs in to a Parlane account, which takes no time with a pace of 0.
  void logIn() {
    get("account/login/start", R"({"type":"parlane"})");
    await("account/updated");
  }
};

}  // namespace ormel::simulator
