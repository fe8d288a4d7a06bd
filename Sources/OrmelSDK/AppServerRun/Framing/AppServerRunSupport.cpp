#include "OrmelSDK/AppServerRun/Framing/AppServerRunSupport.h"

#include <algorithm>
#include <array>
#include <vector>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/Text/LowercasedText.h"

namespace ormel::detail {

namespace {

std::string kindDescription(const DecodingError& error) {
  switch (error.kind()) {
    case DecodingError::Kind::typeMismatch:
      return "type mismatch for " + error.subject();
    case DecodingError::Kind::valueNotFound:
      return "missing value for " + error.subject();
    case DecodingError::Kind::keyNotFound:
      return "missing key '" + error.subject() + "'";
    case DecodingError::Kind::dataCorrupted:
      break;
  }
  return "data corrupted";
}

std::string joinedPath(const std::vector<std::string>& codingPath) {
  std::string path;
  for (const auto& key : codingPath) {
    if (key.empty()) continue;
    if (!path.empty()) path += '.';
    path += key;
  }
  return path.empty() ? "$" : path;
}

}  // namespace

JSONValue decodeJSONValue(std::string_view from) { return JSONValue::decode(from); }

std::string appServerProtocolErrorDescription(const std::exception& error) {
  if (const auto* decoding = dynamic_cast<const DecodingError*>(&error)) {
    return decodingErrorDescription(kindDescription(*decoding), decoding->context());
  }
  if (const auto* ours = dynamic_cast<const Error*>(&error)) return ours->description();
  return error.what();
}

std::string decodingErrorDescription(std::string_view kind, const DecodingContext& context) {
  std::string sentence = "App-server decode error at " + joinedPath(context.codingPath) + ": ";
  sentence += kind;
  sentence += ": " + context.debugDescription;
  if (context.underlyingError) sentence += " (" + context.underlyingError->description() + ")";
  return sentence;
}

bool isUnknownMethodCompatibilityError(std::int64_t code, std::string_view message) {
  if (code == AppServerRPCError::methodNotFoundCode) return true;
  if (code != AppServerRPCError::invalidRequestCode) return false;
  const std::string lowered = lowercased(message);
  constexpr std::array<std::string_view, 3> phrases = {"unknown method", "method not found", "not supported"};
  return std::ranges::any_of(phrases,
                             [&](std::string_view phrase) { return lowered.find(phrase) != std::string::npos; });
}

}  // namespace ormel::detail
