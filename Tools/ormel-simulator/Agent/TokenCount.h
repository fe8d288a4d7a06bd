#pragma once

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

struct TokenCount {
  double input = 0;
  double cachedInput = 0;
  double output = 0;

  double total() const { return input + output; }
  TokenCount& operator+=(const TokenCount& more);
  JSONValue json() const;
  static TokenCount fromJSON(const JSONValue& value);
};

}  // namespace ormel::simulator
