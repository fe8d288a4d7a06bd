#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string_view>

#include "Check.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Records/ThreadRecords.h"

namespace {

using namespace ormel;

// Some kinds of item are written without the word that they could be read back by.
void dropItems(OrmelThreadRecord& thread) {
  for (auto& turn : thread.turns) turn.items.clear();
}

}  // namespace

// Any JSON text as the reply to `thread/read`.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using fuzzing::expect;
  try {
    const JSONValue value = JSONValue::decode(std::string_view(reinterpret_cast<const char*>(bytes), size));
    auto response = decode<ThreadReadResponse>(value);
    // From here on nothing may fail.
    try {
      std::ostringstream printed;
      printed << response;
      expect(printed.str().find('\n') == std::string::npos, "what is printed is one line", value);
      dropItems(response.thread);
      const JSONValue written = JSONValue::decode(encode(response).encode());
      expect(decode<ThreadReadResponse>(written) == response, "what is written reads back equal", value);
    } catch (const Error& error) {
      expect(false, error.what(), value);
    }
  } catch (const DecodingError&) {
    return 0;
  }
  return 0;
}
