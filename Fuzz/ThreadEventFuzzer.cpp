#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "OrmelSDK/JSONValue.h"
#include "OrmelSDK/ThreadEvent.h"

namespace {

using namespace ormel;

// Some kinds of item are written without the word that they could be read back by.
bool carriesAnItem(const ThreadEvent& event) {
  return std::holds_alternative<ItemStartedEvent>(event.value) ||
         std::holds_alternative<ItemUpdatedEvent>(event.value) ||
         std::holds_alternative<ItemCompletedEvent>(event.value);
}

std::optional<ThreadEvent> readEvent(std::string_view text) {
  try {
    return decode<ThreadEvent>(JSONValue::decode(text));
  } catch (const DecodingError&) {
    return std::nullopt;
  }
}

}  // namespace

// Whatever event a text holds can be written, and what is written reads back to the same event.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto event = readEvent({reinterpret_cast<const char*>(data), size});
  if (!event) return 0;
  const std::string written = encode(*event).encode();
  if (!carriesAnItem(*event) && readEvent(written) != event) std::abort();
  return 0;
}
