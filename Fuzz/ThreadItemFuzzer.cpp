#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Check.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace {

using ormel::JSONValue;
using ormel::ThreadItem;

// Some cases are written without their type, so the reader is told again what it read.
JSONValue withType(const JSONValue& object, const JSONValue& type) {
  std::vector<ormel::JSONMemberInit> members;
  for (const auto& [key, value] : *object.objectValue()) members.emplace_back(key, value);
  members.emplace_back("type", type);
  return JSONValue::object(members);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using ormel::fuzzing::expect;
  try {
    const JSONValue value = JSONValue::decode(std::string_view(reinterpret_cast<const char*>(bytes), size));
    const auto item = ormel::decode<ThreadItem>(value);
    // From here on nothing may fail.
    try {
      const JSONValue written = ormel::encode(item);
      const auto again = ormel::decode<ThreadItem>(withType(written, *value.find("type")));
      expect(again == item, "what is written reads back equal", value);
      expect(again.id() == item.id(), "the id stays", value);
    } catch (const ormel::Error& error) {
      expect(false, error.what(), value);
    }
  } catch (const ormel::DecodingError&) {
    return 0;
  }
  return 0;
}
