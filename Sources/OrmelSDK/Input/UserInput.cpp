#include "OrmelSDK/Input/UserInput.h"

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ImageDetail> {
  static constexpr auto rule = closed;
  static constexpr Word<ImageDetail> words[] = {
      {ImageDetail::high, "high"},
      {ImageDetail::original, "original"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::UserInputTextByteRange> {
  static constexpr Field fields[] = {
      required<&UserInputTextByteRange::start>("start"),
      required<&UserInputTextByteRange::end>("end"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::UserInputTextElement> {
  static constexpr Field fields[] = {
      required<&UserInputTextElement::byteRange>("byteRange"),
      optional<&UserInputTextElement::placeholder>("placeholder"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::UserInputText> {
  static constexpr Field fields[] = {
      required<&UserInputText::text>("text"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::UserInputTextElements> {
  static constexpr Field fields[] = {
      required<&UserInputTextElements::text>("text"),
      defaulted<&UserInputTextElements::elements>("textElements", "text_elements")
          .writtenAs("text_elements")
          .omittedWhenEmpty(),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::UserInputImage> {
  static constexpr Field fields[] = {
      required<&UserInputImage::url>("url"),
      optional<&UserInputImage::detail>("detail"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::UserInputLocalImage> {
  static constexpr Field fields[] = {
      required<&UserInputLocalImage::path>("path"),
      optional<&UserInputLocalImage::detail>("detail"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::UserInputSkill> {
  static constexpr Field fields[] = {
      required<&UserInputSkill::name>("name"),
      required<&UserInputSkill::path>("path"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::UserInputMention> {
  static constexpr Field fields[] = {
      required<&UserInputMention::name>("name"),
      required<&UserInputMention::path>("path"),
  };
};

/// Both text cases carry the word "text"; reading decides between them by the elements.
template <>
struct ormel::coding::VariantTable<ormel::UserInput> : CasesOf<UserInput> {
  static constexpr Case cases[] = {
      variantCase<UserInputTextElements>("text"), variantCase<UserInputText>("text"),
      variantCase<UserInputImage>("image"),       variantCase<UserInputLocalImage>("localImage", "local_image"),
      variantCase<UserInputSkill>("skill"),       variantCase<UserInputMention>("mention"),
  };
  static UserInput decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
};

namespace ormel::coding {

UserInput VariantTable<UserInput>::decodeUnknown(std::string_view type, const JSONValue&, const CodingPath& path) {
  failCorrupted("Unknown user input type: " + std::string(type), path);
}

namespace {

// A text with no marked range is the plain case.
void decodeUserInput(UserInput& into, const JSONValue& value, const CodingPath& path) {
  decodeVariant(into, value, path);
  if (auto* marked = std::get_if<UserInputTextElements>(&into.value); marked && marked->elements.empty()) {
    into = UserInputText{std::move(marked->text)};
  }
}

void decodeLossyUserInput(LossyUserInput& into, const JSONValue& value, const CodingPath& path) {
  try {
    Codec<UserInput>::decodeInto(into.value.emplace(), value, path);
  } catch (const DecodingError&) {
    into.value.reset();
  }
}

JSONValue printedInput(const Input& input) {
  if (const auto* text = std::get_if<std::string>(&input.value)) return *text;
  return Codec<std::vector<UserInput>>::encode(std::get<std::vector<UserInput>>(input.value));
}

JSONValue encodeLossyUserInput(const LossyUserInput& input) {
  return input.value ? Codec<UserInput>::encode(*input.value) : JSONValue();
}

}  // namespace

}  // namespace ormel::coding

namespace ormel {

UserInput::UserInput() = default;
UserInput::UserInput(const UserInput&) = default;
UserInput::UserInput(UserInput&&) noexcept = default;
UserInput& UserInput::operator=(const UserInput&) = default;
UserInput& UserInput::operator=(UserInput&&) noexcept = default;
UserInput::~UserInput() = default;

UserInput::UserInput(UserInputText part) : value(std::move(part)) {}
UserInput::UserInput(UserInputTextElements part) : value(std::move(part)) {}
UserInput::UserInput(UserInputImage part) : value(std::move(part)) {}
UserInput::UserInput(UserInputLocalImage part) : value(std::move(part)) {}
UserInput::UserInput(UserInputSkill part) : value(std::move(part)) {}
UserInput::UserInput(UserInputMention part) : value(std::move(part)) {}

UserInput UserInput::text(std::string text) { return UserInputText{std::move(text)}; }
UserInput UserInput::textElements(std::string text, std::vector<UserInputTextElement> elements) {
  return UserInputTextElements{std::move(text), std::move(elements)};
}
UserInput UserInput::image(std::string url, std::optional<ImageDetail> detail) {
  return UserInputImage{std::move(url), detail};
}
UserInput UserInput::localImage(std::string path, std::optional<ImageDetail> detail) {
  return UserInputLocalImage{std::move(path), detail};
}
UserInput UserInput::skill(std::string name, std::string path) {
  return UserInputSkill{std::move(name), std::move(path)};
}
UserInput UserInput::mention(std::string name, std::string path) {
  return UserInputMention{std::move(name), std::move(path)};
}

Input::Input() = default;
Input::Input(const Input&) = default;
Input::Input(Input&&) noexcept = default;
Input& Input::operator=(const Input&) = default;
Input& Input::operator=(Input&&) noexcept = default;
Input::~Input() = default;

Input::Input(std::string text) : value(std::move(text)) {}
Input::Input(const char* text) : value(std::string(text)) {}
Input::Input(std::string_view text) : value(std::string(text)) {}
Input::Input(const SharedText& text) : value(text.string()) {}
Input::Input(std::vector<UserInput> userInputs) : value(std::move(userInputs)) {}
Input::Input(UserInput userInput) { value.emplace<std::vector<UserInput>>().push_back(std::move(userInput)); }

Input Input::from(std::vector<UserInput> userInputs) { return Input(std::move(userInputs)); }

}  // namespace ormel

ORMEL_DEFINE_ENUMERATION(ImageDetail)
ORMEL_DEFINE_RECORD(UserInputTextByteRange)
ORMEL_DEFINE_RECORD(UserInputTextElement)
ORMEL_DEFINE_CASE(UserInputText)
ORMEL_DEFINE_PRINTING(UserInputText)
ORMEL_DEFINE_CASE(UserInputTextElements)
ORMEL_DEFINE_PRINTING(UserInputTextElements)
ORMEL_DEFINE_CASE(UserInputImage)
ORMEL_DEFINE_PRINTING(UserInputImage)
ORMEL_DEFINE_CASE(UserInputLocalImage)
ORMEL_DEFINE_PRINTING(UserInputLocalImage)
ORMEL_DEFINE_CASE(UserInputSkill)
ORMEL_DEFINE_PRINTING(UserInputSkill)
ORMEL_DEFINE_CASE(UserInputMention)
ORMEL_DEFINE_PRINTING(UserInputMention)
ORMEL_DEFINE_EQUALITY(UserInput)
ORMEL_DEFINE_CODEC_BY(UserInput, decodeUserInput, encodeVariant)
ORMEL_DEFINE_EQUALITY(LossyUserInput)
ORMEL_DEFINE_CODEC_BY(LossyUserInput, decodeLossyUserInput, encodeLossyUserInput)
ORMEL_DEFINE_EQUALITY(Input)
ORMEL_DEFINE_PRINTED_BY(Input, printedInput)
