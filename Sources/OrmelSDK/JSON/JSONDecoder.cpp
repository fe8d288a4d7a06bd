#include "OrmelSDK/JSON/JSONDecoder.h"

#include <utility>
#include <vector>

#include "OrmelSDK/JSON/CodingErrors.h"

namespace ormel::detail {

namespace {

// Makes every integer that 64 bits may not hold a number with an exponent, which simdjson reads as the nearest double.
std::string withUnfitIntegersAsDoubles(std::string_view text, const std::vector<std::size_t>& ends) {
  constexpr std::string_view exponent = "e0";
  std::string rewritten;
  rewritten.reserve(text.size() + ends.size() * exponent.size() + jsonPadding);
  std::size_t start = 0;
  for (const std::size_t end : ends) {
    rewritten += text.substr(start, end - start);
    rewritten += exponent;
    start = end;
  }
  rewritten += text.substr(start);
  return rewritten;
}

}  // namespace

std::string examinedText(std::string_view text) {
  const JSONExamination examination = examineJSON(text, JSONValue::maximumDecodingDepth);
  if (examination.failure) {
    DecodingContext context("The given data was not valid JSON.");
    context.underlyingError =
        std::make_shared<JSONSyntaxError>(examination.failure->reason, examination.failure->byteOffset);
    throw DecodingError::dataCorrupted(std::move(context));
  }
  return withUnfitIntegersAsDoubles(text, examination.unfitIntegerEnds).append(jsonPadding, ' ');
}

void failUnsupportedValue() { throw DecodingError::dataCorrupted(DecodingContext("Unsupported JSON value")); }

}  // namespace ormel::detail
