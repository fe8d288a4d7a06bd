#include "ormel-simulator/Agent/TokenCount.h"

#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

TokenCount& TokenCount::operator+=(const TokenCount& more) {
  input += more.input;
  cachedInput += more.cachedInput;
  output += more.output;
  return *this;
}

JSONValue TokenCount::json() const {
  return JSONValue::object({{"totalTokens", total()},
                            {"inputTokens", input},
                            {"cachedInputTokens", cachedInput},
                            {"outputTokens", output},
                            {"reasoningOutputTokens", 0}});
}

TokenCount TokenCount::fromJSON(const JSONValue& value) {
  return {numberMember(value, "inputTokens"), numberMember(value, "cachedInputTokens"),
          numberMember(value, "outputTokens")};
}

}  // namespace ormel::simulator
