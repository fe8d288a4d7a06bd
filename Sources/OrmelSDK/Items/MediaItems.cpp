#include "OrmelSDK/Items/MediaItems.h"

#include <string_view>

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::WebSearchItem> {
  static constexpr Field fields[] = {
      required<&WebSearchItem::id>("id"),
      required<&WebSearchItem::query>("query"),
      optional<&WebSearchItem::action>("action"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ImageViewItem> {
  static constexpr Field fields[] = {
      required<&ImageViewItem::id>("id"),
      required<&ImageViewItem::path>("path"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ImageGenerationItem> {
  static constexpr std::string_view writtenType = "image_generation";
  static constexpr Field fields[] = {
      required<&ImageGenerationItem::id>("id"),
      required<&ImageGenerationItem::status>("status"),
      optional<&ImageGenerationItem::revisedPrompt>("revised_prompt", "revisedPrompt"),
      defaulted<&ImageGenerationItem::result>("result"),
      optional<&ImageGenerationItem::savedPath>("saved_path", "savedPath"),
  };
};

ORMEL_DEFINE_HOT_RECORD(WebSearchItem)
ORMEL_DEFINE_HOT_RECORD(ImageViewItem)
ORMEL_DEFINE_HOT_RECORD(ImageGenerationItem)
