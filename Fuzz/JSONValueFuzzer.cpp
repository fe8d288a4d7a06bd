#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Check.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace {

using ormel::JSONValue;
using ormel::fuzzing::expect;

struct Decoded {
  std::optional<JSONValue> value;
  std::string failure;
};

template <typename Decode>
Decoded decodeBy(Decode decode, std::string_view text) {
  try {
    return {decode(text), {}};
  } catch (const ormel::DecodingError& error) {
    return {std::nullopt, error.what()};
  }
}

void checkValue(const JSONValue& value) {
  const std::string text = value.encode();
  expect(text.find('\n') == std::string::npos, "no line feed is written", value);
  expect(JSONValue::decode(text) == value, "encoded text decodes to an equal value", value);
  expect(value.detached() == value, "a detached value is equal", value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const Decoded usual = decodeBy(JSONValue::decode, text);
  const Decoded documented = decodeBy(ormel::detail::decodeThroughDocument, text);
  expect(usual.failure == documented.failure, "both readers give the same error", usual.failure);
  if (!usual.value) return 0;
  expect(usual.value->encode() == documented.value->encode(), "both readers give the same value", *usual.value);
  checkValue(*usual.value);
  checkValue(*documented.value);
  return 0;
}
