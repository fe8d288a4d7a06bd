#include "OrmelSDK/Input/UserInput.h"

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Input/UserInputTables.h"

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

ORMEL_DEFINE_ENUMERATION(ImageDetail)
ORMEL_DEFINE_RECORD(UserInputTextByteRange)
ORMEL_DEFINE_RECORD(UserInputTextElement)
ORMEL_DEFINE_PRINTED_RECORD(UserInputText)
ORMEL_DEFINE_PRINTED_RECORD(UserInputTextElements)
ORMEL_DEFINE_PRINTED_RECORD(UserInputImage)
ORMEL_DEFINE_PRINTED_RECORD(UserInputLocalImage)
ORMEL_DEFINE_PRINTED_RECORD(UserInputSkill)
ORMEL_DEFINE_PRINTED_RECORD(UserInputMention)
ORMEL_DEFINE_CODEC_BY(UserInput, decodeUserInput, encodeVariant)
ORMEL_DEFINE_CODEC_BY(LossyUserInput, decodeLossyUserInput, encodeLossyUserInput)
ORMEL_DEFINE_PRINTED_BY(Input, printedInput)
