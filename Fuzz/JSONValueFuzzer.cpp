#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Check.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using ormel::JSONValue;
  using ormel::fuzzing::expect;
  JSONValue value;
  try {
    value = JSONValue::decode(std::string_view(reinterpret_cast<const char*>(bytes), size));
  } catch (const ormel::DecodingError&) {
    return 0;
  }
  const std::string text = value.encode();
  expect(text.find('\n') == std::string::npos, "no line feed is written", value);
  expect(JSONValue::decode(text) == value, "what is written reads back equal", value);
  expect(value.detached() == value, "a value that stands by itself is equal", value);
  return 0;
}
