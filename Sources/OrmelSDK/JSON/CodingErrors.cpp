#include "OrmelSDK/JSON/CodingErrors.h"

#include <utility>

namespace ormel {

namespace {

std::string describe(const DecodingContext& context) {
  if (!context.underlyingError) return context.debugDescription;
  return context.debugDescription + " (" + context.underlyingError->description() + ")";
}

}  // namespace

JSONSyntaxError::JSONSyntaxError(std::string_view reason, std::size_t byteOffset)
    : Error(std::string(reason) + " at byte " + std::to_string(byteOffset)), reason_(reason), byteOffset_(byteOffset) {}

DecodingError::DecodingError(Kind kind, std::string subject, DecodingContext context)
    : Error(describe(context)), kind_(kind), subject_(std::move(subject)), context_(std::move(context)) {}

DecodingError DecodingError::typeMismatch(std::string typeName, DecodingContext context) {
  return DecodingError(Kind::typeMismatch, std::move(typeName), std::move(context));
}

DecodingError DecodingError::valueNotFound(std::string typeName, DecodingContext context) {
  return DecodingError(Kind::valueNotFound, std::move(typeName), std::move(context));
}

DecodingError DecodingError::keyNotFound(std::string key, DecodingContext context) {
  return DecodingError(Kind::keyNotFound, std::move(key), std::move(context));
}

DecodingError DecodingError::dataCorrupted(DecodingContext context) {
  return DecodingError(Kind::dataCorrupted, {}, std::move(context));
}

std::string JSONSyntaxError::generalAdvice() const {
  return "The text is not JSON; look at the byte that is named, counted from 0.";
}

std::string DecodingError::generalAdvice() const {
  std::string place;
  for (const std::string& key : context_.codingPath) {
    if (!place.empty()) place += '.';
    place += key;
  }
  const std::string where = place.empty() ? "at the top of the value" : "at " + detail::quotedForPeople(place);
  return "Look at the value " + where +
         ". If it came from the server, its version and that of this library may not go together: update the older "
         "one. "
         "If it came from the application, correct it there.";
}

std::string EncodingError::generalAdvice() const {
  return "The application built a value that JSON has no form for: leave out numbers that are not finite, and nest "
         "less "
         "deeply.";
}

}  // namespace ormel
