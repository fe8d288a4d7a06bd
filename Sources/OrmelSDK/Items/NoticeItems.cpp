#include "OrmelSDK/Items/NoticeItems.h"

#include <string>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/Items/NoticeItemsTables.h"

namespace ormel::coding {

namespace {

void decodeUnknownThreadItem(UnknownThreadItem& item, const JSONValue& value, const CodingPath& path) {
  item.itemType = decodeType(value, typeName<UnknownThreadItem>(), path);
  const JSONValue* id = value.find("id");
  if (!id) failMissingKey("id", path);
  Codec<std::string>::decodeInto(item.id, *id, path.at("id"));
  Codec<JSONValue>::decodeInto(item.payload, value, path);
}

JSONValue encodeUnknownThreadItem(const UnknownThreadItem& item) { return item.payload; }

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_RECORD(ReviewModeItem)
ORMEL_DEFINE_RECORD(ContextCompactionItem)
ORMEL_DEFINE_RECORD(SleepItem)
ORMEL_DEFINE_RECORD(ErrorItem)
ORMEL_DEFINE_CODEC_BY(UnknownThreadItem, decodeUnknownThreadItem, encodeUnknownThreadItem)
