#include "OrmelSDK/JSON/JSONDecoding.h"

#include <simdjson.h>

#include <type_traits>
#include <utility>

#include "OrmelSDK/JSON/JSONDecoder.h"
#include "OrmelSDK/JSON/JSONDocumentReader.h"
#include "OrmelSDK/JSON/JSONReaderChoice.h"
#include "OrmelSDK/JSON/JSONTapeReader.h"

namespace ormel {

namespace detail {

namespace {

constexpr bool usesTape =
    !onlyPublicInterface && tapeLayoutIsKnown(simdjson::SIMDJSON_VERSION_MAJOR, simdjson::SIMDJSON_VERSION_MINOR,
                                              simdjson::SIMDJSON_VERSION_REVISION);

static_assert(!usesTape || jsonPadding >= simdjson::SIMDJSON_PADDING);

using Decoder = JSONDecoder<
    std::conditional_t<usesTape, JSONTapeReader<simdjson::dom::parser, simdjson::dom::document>, JSONDocumentReader>>;

}  // namespace

JSONValue decodePaddedJSON(std::string_view text) { return Decoder::decodePadded(text); }

JSONValue decodePaddedJSON(ByteBuffer text) { return Decoder::decodePadded(std::move(text)); }

bool decodesFromTape() noexcept { return usesTape; }

}  // namespace detail

JSONValue JSONValue::decode(std::string_view text) { return detail::Decoder::decode(text); }

}  // namespace ormel
