#pragma once

#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Items/MediaItems.h"

template <>
struct ormel::coding::RecordTable<ormel::WebSearchItem> {
  static constexpr auto fields =
      std::tuple(required<&WebSearchItem::id>("id"), required<&WebSearchItem::query>("query"),
                 optional<&WebSearchItem::action>("action"));
};
ORMEL_DECLARE_CODEC(WebSearchItem)

template <>
struct ormel::coding::RecordTable<ormel::ImageViewItem> {
  static constexpr auto fields = std::tuple(required<&ImageViewItem::id>("id"), required<&ImageViewItem::path>("path"));
};
ORMEL_DECLARE_CODEC(ImageViewItem)

template <>
struct ormel::coding::RecordTable<ormel::ImageGenerationItem> {
  static constexpr std::string_view writtenType = "image_generation";
  static constexpr auto fields =
      std::tuple(required<&ImageGenerationItem::id>("id"), required<&ImageGenerationItem::status>("status"),
                 optional<&ImageGenerationItem::revisedPrompt>("revised_prompt", "revisedPrompt"),
                 defaulted<&ImageGenerationItem::result>("result"),
                 optional<&ImageGenerationItem::savedPath>("saved_path", "savedPath"));
};
ORMEL_DECLARE_CODEC(ImageGenerationItem)
