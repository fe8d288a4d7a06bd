#pragma once

#include <array>
#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/Input/UserInput.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ImageDetail> {
  static constexpr auto words =
      closed(std::array{Word{ImageDetail::high, "high"}, Word{ImageDetail::original, "original"}});
};
ORMEL_DECLARE_ENUMERATION(ImageDetail)

template <>
struct ormel::coding::RecordTable<ormel::UserInputTextByteRange> {
  static constexpr auto fields =
      std::tuple(required<&UserInputTextByteRange::start>("start"), required<&UserInputTextByteRange::end>("end"));
};
ORMEL_DECLARE_CODEC(UserInputTextByteRange)

template <>
struct ormel::coding::RecordTable<ormel::UserInputTextElement> {
  static constexpr auto fields = std::tuple(required<&UserInputTextElement::byteRange>("byteRange"),
                                            optional<&UserInputTextElement::placeholder>("placeholder"));
};
ORMEL_DECLARE_CODEC(UserInputTextElement)

template <>
struct ormel::coding::RecordTable<ormel::UserInputText> {
  static constexpr auto fields = std::tuple(required<&UserInputText::text>("text"));
};
ORMEL_DECLARE_PRINTED(UserInputText)

template <>
struct ormel::coding::RecordTable<ormel::UserInputTextElements> {
  static constexpr auto fields = std::tuple(required<&UserInputTextElements::text>("text"),
                                            defaulted<&UserInputTextElements::elements>("textElements", "text_elements")
                                                .writtenAs("text_elements")
                                                .omittedWhenEmpty());
};
ORMEL_DECLARE_PRINTED(UserInputTextElements)

template <>
struct ormel::coding::RecordTable<ormel::UserInputImage> {
  static constexpr auto fields =
      std::tuple(required<&UserInputImage::url>("url"), optional<&UserInputImage::detail>("detail"));
};
ORMEL_DECLARE_PRINTED(UserInputImage)

template <>
struct ormel::coding::RecordTable<ormel::UserInputLocalImage> {
  static constexpr auto fields =
      std::tuple(required<&UserInputLocalImage::path>("path"), optional<&UserInputLocalImage::detail>("detail"));
};
ORMEL_DECLARE_PRINTED(UserInputLocalImage)

template <>
struct ormel::coding::RecordTable<ormel::UserInputSkill> {
  static constexpr auto fields =
      std::tuple(required<&UserInputSkill::name>("name"), required<&UserInputSkill::path>("path"));
};
ORMEL_DECLARE_PRINTED(UserInputSkill)

template <>
struct ormel::coding::RecordTable<ormel::UserInputMention> {
  static constexpr auto fields =
      std::tuple(required<&UserInputMention::name>("name"), required<&UserInputMention::path>("path"));
};
ORMEL_DECLARE_PRINTED(UserInputMention)

/// Both text cases carry the word "text"; reading decides between them by the elements.
template <>
struct ormel::coding::VariantTable<ormel::UserInput> {
  static constexpr auto cases =
      std::tuple(variantCase<UserInputTextElements>("text"), variantCase<UserInputText>("text"),
                 variantCase<UserInputImage>("image"), variantCase<UserInputLocalImage>("localImage", "local_image"),
                 variantCase<UserInputSkill>("skill"), variantCase<UserInputMention>("mention"));
  static UserInput decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
};
ORMEL_DECLARE_CODEC(UserInput)
ORMEL_DECLARE_CODEC(LossyUserInput)
ORMEL_DECLARE_PRINTED(Input)
