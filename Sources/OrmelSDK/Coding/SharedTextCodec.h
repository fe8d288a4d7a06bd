#pragma once

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel::coding {

template <>
struct Codec<SharedText> {
  static void decodeInto(SharedText& into, const JSONValue& value, const CodingPath& path) {
    into = SharedText(textOf(value, path));
  }
  static JSONValue encode(const SharedText& value) { return value.view(); }
};

}  // namespace ormel::coding
