#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "Check.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace {

using namespace ormel;

// Some kinds of item are written without the word that they could be read back by.
bool carriesAnItem(const ThreadEvent& event) {
  return std::holds_alternative<ItemStartedEvent>(event.value) ||
         std::holds_alternative<ItemUpdatedEvent>(event.value) ||
         std::holds_alternative<ItemCompletedEvent>(event.value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using fuzzing::expect;
  try {
    const JSONValue value = JSONValue::decode(std::string_view(reinterpret_cast<const char*>(bytes), size));
    const auto event = decode<ThreadEvent>(value);
    // From here on nothing may fail.
    try {
      const JSONValue written = JSONValue::decode(encode(event).encode());
      expect(carriesAnItem(event) || decode<ThreadEvent>(written) == event, "what is written reads back equal", value);
    } catch (const Error& error) {
      expect(false, error.what(), value);
    }
  } catch (const DecodingError&) {
    return 0;
  }
  return 0;
}
