#pragma once

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/SharedText.h"

namespace ormel::coding {

template <>
struct Codec<SharedText> {
  static SharedText decode(const JSONValue& value, const CodingPath& path) {
    const auto text = value.stringValue();
    if (!text) failUnexpected("String", value, path);
    return *text;
  }
  static JSONValue encode(const SharedText& value) { return value.view(); }
};

}  // namespace ormel::coding
