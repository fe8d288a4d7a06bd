#include "OrmelSDK/NoticeItems.h"

#include <string>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/NoticeItemsTables.h"

namespace ormel::coding {

namespace {

UnknownThreadItem decodeUnknownThreadItem(const JSONValue& value, const CodingPath& path) {
  UnknownThreadItem item;
  item.itemType = decodeType(value, typeName<UnknownThreadItem>(), path);
  const JSONValue* id = value.find("id");
  if (!id) failMissingKey("id", path);
  item.id = Codec<std::string>::decode(*id, path.at("id"));
  item.payload = value;
  return item;
}

JSONValue encodeUnknownThreadItem(const UnknownThreadItem& item) { return item.payload; }

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_RECORD(ReviewModeItem)
ORMEL_DEFINE_RECORD(ContextCompactionItem)
ORMEL_DEFINE_RECORD(SleepItem)
ORMEL_DEFINE_RECORD(ErrorItem)
ORMEL_DEFINE_CODEC_BY(UnknownThreadItem, decodeUnknownThreadItem, encodeUnknownThreadItem)
