#pragma once

#include <array>
#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/Items/DynamicToolCallItems.h"

template <>
struct ormel::coding::EnumerationTable<ormel::DynamicToolCallStatus> {
  static constexpr auto words =
      tolerant(DynamicToolCallStatus::failed, std::array{Word{DynamicToolCallStatus::inProgress, "in_progress"},
                                                         Word{DynamicToolCallStatus::completed, "completed"},
                                                         Word{DynamicToolCallStatus::failed, "failed"}});
};
ORMEL_DECLARE_ENUMERATION(DynamicToolCallStatus)

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolCallOutputText> {
  static constexpr auto fields = std::tuple(required<&DynamicToolCallOutputText::text>("text"));
};

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolCallOutputImage> {
  static constexpr auto fields = std::tuple(required<&DynamicToolCallOutputImage::imageURL>("image_url", "imageUrl"));
};

template <>
struct ormel::coding::VariantTable<ormel::DynamicToolCallOutputContentItem> {
  static constexpr auto cases = std::tuple(variantCase<DynamicToolCallOutputText>("inputText"),
                                           variantCase<DynamicToolCallOutputImage>("inputImage"));
  static DynamicToolCallOutputContentItem decodeUnknown(std::string_view type, const JSONValue& value,
                                                        const CodingPath& path);
};
ORMEL_DECLARE_CODEC(DynamicToolCallOutputContentItem)

template <>
struct ormel::coding::RecordTable<ormel::DynamicToolCallItem> {
  static constexpr auto fields = std::tuple(
      required<&DynamicToolCallItem::id>("id"), optional<&DynamicToolCallItem::namespace_>("namespace"),
      required<&DynamicToolCallItem::tool>("tool"), required<&DynamicToolCallItem::arguments>("arguments"),
      required<&DynamicToolCallItem::status>("status"), optional<&DynamicToolCallItem::contentItems>("content_items"),
      optional<&DynamicToolCallItem::durationMilliseconds>("duration_ms"),
      optional<&DynamicToolCallItem::success>("success"));
};
ORMEL_DECLARE_CODEC(DynamicToolCallItem)
