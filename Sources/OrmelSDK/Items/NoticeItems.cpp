#include "OrmelSDK/Items/NoticeItems.h"

#include <string>
#include <string_view>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

template <>
struct ormel::coding::RecordTable<ormel::ReviewModeItem> {
  static constexpr Field fields[] = {
      required<&ReviewModeItem::id>("id"),
      required<&ReviewModeItem::review>("review"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ContextCompactionItem> {
  static constexpr Field fields[] = {
      required<&ContextCompactionItem::id>("id"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SleepItem> {
  static constexpr std::string_view writtenType = "sleep";
  static constexpr Field fields[] = {
      required<&SleepItem::id>("id"),
      optional<&SleepItem::durationMilliseconds>("durationMs", "duration_ms"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ErrorItem> {
  static constexpr Field fields[] = {
      required<&ErrorItem::id>("id"),
      required<&ErrorItem::message>("message"),
  };
};

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

ORMEL_DEFINE_HOT_RECORD(ReviewModeItem)
ORMEL_DEFINE_HOT_RECORD(ContextCompactionItem)
ORMEL_DEFINE_HOT_RECORD(SleepItem)
ORMEL_DEFINE_HOT_RECORD(ErrorItem)
ORMEL_DEFINE_EQUALITY(UnknownThreadItem)
ORMEL_DEFINE_CODEC_BY(UnknownThreadItem, decodeUnknownThreadItem, encodeUnknownThreadItem)
