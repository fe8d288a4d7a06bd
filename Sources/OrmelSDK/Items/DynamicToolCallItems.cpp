#include "OrmelSDK/Items/DynamicToolCallItems.h"

#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

template <>
struct ormel::coding::EnumerationTable<ormel::DynamicToolCallStatus> {
  static constexpr auto rule = tolerant(DynamicToolCallStatus::failed);
  static constexpr Word<DynamicToolCallStatus> words[] = {
      {DynamicToolCallStatus::inProgress, "in_progress"},
      {DynamicToolCallStatus::completed, "completed"},
      {DynamicToolCallStatus::failed, "failed"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolCallOutputText> {
  static constexpr Field fields[] = {
      required<&DynamicToolCallOutputText::text>("text"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolCallOutputImage> {
  static constexpr Field fields[] = {
      required<&DynamicToolCallOutputImage::imageURL>("image_url", "imageUrl"),
  };
};

template <>
struct ormel::coding::VariantTable<ormel::DynamicToolCallOutputContentItem>
    : CasesOf<DynamicToolCallOutputContentItem> {
  static constexpr Case cases[] = {
      variantCase<DynamicToolCallOutputText>("inputText"),
      variantCase<DynamicToolCallOutputImage>("inputImage"),
  };
  static DynamicToolCallOutputContentItem decodeUnknown(std::string_view type, const JSONValue& value,
                                                        const CodingPath& path);
};

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolCallItem> {
  static constexpr Field fields[] = {
      required<&DynamicToolCallItem::id>("id"),
      optional<&DynamicToolCallItem::namespace_>("namespace"),
      required<&DynamicToolCallItem::tool>("tool"),
      required<&DynamicToolCallItem::arguments>("arguments"),
      required<&DynamicToolCallItem::status>("status"),
      optional<&DynamicToolCallItem::contentItems>("content_items"),
      optional<&DynamicToolCallItem::durationMilliseconds>("duration_ms"),
      optional<&DynamicToolCallItem::success>("success"),
  };
};

namespace ormel::coding {

DynamicToolCallOutputContentItem VariantTable<DynamicToolCallOutputContentItem>::decodeUnknown(std::string_view type,
                                                                                               const JSONValue&,
                                                                                               const CodingPath& path) {
  failCorrupted("Unknown dynamic tool content type: " + std::string(type), path.at("type"));
}

}  // namespace ormel::coding

namespace ormel {

DynamicToolCallOutputContentItem::DynamicToolCallOutputContentItem() = default;
DynamicToolCallOutputContentItem::DynamicToolCallOutputContentItem(const DynamicToolCallOutputContentItem&) = default;
DynamicToolCallOutputContentItem::DynamicToolCallOutputContentItem(DynamicToolCallOutputContentItem&&) noexcept =
    default;
DynamicToolCallOutputContentItem& DynamicToolCallOutputContentItem::operator=(const DynamicToolCallOutputContentItem&) =
    default;
DynamicToolCallOutputContentItem& DynamicToolCallOutputContentItem::operator=(
    DynamicToolCallOutputContentItem&&) noexcept = default;
DynamicToolCallOutputContentItem::~DynamicToolCallOutputContentItem() = default;

DynamicToolCallOutputContentItem::DynamicToolCallOutputContentItem(DynamicToolCallOutputText part)
    : value(std::move(part)) {}
DynamicToolCallOutputContentItem::DynamicToolCallOutputContentItem(DynamicToolCallOutputImage part)
    : value(std::move(part)) {}

DynamicToolCallOutputContentItem DynamicToolCallOutputContentItem::inputText(std::string text) {
  return DynamicToolCallOutputText{std::move(text)};
}
DynamicToolCallOutputContentItem DynamicToolCallOutputContentItem::inputImage(std::string imageURL) {
  return DynamicToolCallOutputImage{std::move(imageURL)};
}

}  // namespace ormel

ORMEL_DEFINE_ENUMERATION(DynamicToolCallStatus)
ORMEL_DEFINE_CASE(DynamicToolCallOutputText)
ORMEL_DEFINE_CASE(DynamicToolCallOutputImage)
ORMEL_DEFINE_VARIANT(DynamicToolCallOutputContentItem)
ORMEL_DEFINE_HOT_RECORD(DynamicToolCallItem)
