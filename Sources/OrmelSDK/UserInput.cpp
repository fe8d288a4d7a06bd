#include "OrmelSDK/UserInput.h"

#include <string>
#include <utility>

#include "OrmelSDK/UserInputTables.h"

namespace ormel::coding {

UserInput VariantTable<UserInput>::decodeUnknown(std::string_view type, const JSONValue&, const CodingPath& path) {
  failCorrupted("Unknown user input type: " + std::string(type), path);
}

namespace {

// A text with no marked range is the plain case.
UserInput decodeUserInput(const JSONValue& value, const CodingPath& path) {
  UserInput input = decodeVariant<UserInput>(value, path);
  if (auto* marked = std::get_if<UserInputTextElements>(&input.value); marked && marked->elements.empty()) {
    return UserInputText{std::move(marked->text)};
  }
  return input;
}

LossyUserInput decodeLossyUserInput(const JSONValue& value, const CodingPath& path) {
  try {
    return {Codec<UserInput>::decode(value, path)};
  } catch (const DecodingError&) {
    return {};
  }
}

JSONValue encodeLossyUserInput(const LossyUserInput& input) {
  return input.value ? Codec<UserInput>::encode(*input.value) : JSONValue();
}

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_ENUMERATION(ImageDetail)
ORMEL_DEFINE_RECORD(UserInputTextByteRange)
ORMEL_DEFINE_RECORD(UserInputTextElement)
ORMEL_DEFINE_CODEC_BY(UserInput, decodeUserInput, encodeVariant)
ORMEL_DEFINE_CODEC_BY(LossyUserInput, decodeLossyUserInput, encodeLossyUserInput)
