// Any JSON text as the reply to `thread/read`: it reads as a thread or fails with a `DecodingError`, and what was read
// survives being written, but for the items: some of them are written without the type to read them by.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string_view>

#include "OrmelSDK/CodingErrors.h"
#include "OrmelSDK/JSONValue.h"
#include "OrmelSDK/RecordCoding.h"
#include "OrmelSDK/ThreadRecords.h"

namespace {

std::optional<ormel::ThreadReadResponse> readFrom(const ormel::JSONValue& value) {
  try {
    return ormel::decode<ormel::ThreadReadResponse>(value);
  } catch (const ormel::DecodingError&) {
    return std::nullopt;
  }
}

void requireThat(bool condition) {
  if (!condition) std::abort();
}

void check(const ormel::JSONValue& value) {
  auto response = readFrom(value);
  if (!response) return;
  std::ostringstream printed;
  printed << *response;
  requireThat(printed.view().find('\n') == std::string_view::npos);
  for (auto& turn : response->thread.turns) turn.items.clear();
  requireThat(readFrom(ormel::encode(*response)) == response);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    check(ormel::JSONValue::decode({reinterpret_cast<const char*>(data), size}));
  } catch (const ormel::DecodingError&) {
    return 0;
  }
  return 0;
}
