#include "OrmelSDK/Input/ApprovalMode.h"

#include <map>
#include <string>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ApprovalMode::Policy> {
  static constexpr auto rule = closed;
  static constexpr Word<ApprovalMode::Policy> words[] = {
      {ApprovalMode::Policy::never, "never"},
      {ApprovalMode::Policy::onRequest, "on-request"},
      {ApprovalMode::Policy::onFailure, "on-failure"},
      {ApprovalMode::Policy::untrusted, "untrusted"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GranularApprovalMode> {
  static constexpr Field fields[] = {
      required<&GranularApprovalMode::sandboxApproval>("sandbox_approval"),
      required<&GranularApprovalMode::rules>("rules"),
      required<&GranularApprovalMode::skillApproval>("skill_approval"),
      required<&GranularApprovalMode::requestPermissions>("request_permissions"),
      required<&GranularApprovalMode::mcpElicitations>("mcp_elicitations"),
  };
};

namespace ormel {

std::optional<ApprovalMode> ApprovalMode::fromRawValue(std::string_view rawValue) {
  const auto policy = coding::enumerationCase<Policy>(rawValue);
  if (!policy) return std::nullopt;
  return *policy == Policy::onFailure ? onRequest : ApprovalMode(*policy);
}

std::string_view ApprovalMode::rawValue() const {
  const auto* policy = std::get_if<Policy>(&value);
  return policy ? coding::enumerationWord(*policy) : "granular";
}

JSONValue ApprovalMode::jsonValue() const { return encode(*this == onFailure ? onRequest : *this); }

namespace coding {

namespace {

std::optional<GranularApprovalMode> granularMode(const JSONValue& value, const CodingPath& path) {
  try {
    const auto modes = decodeAs<std::map<std::string, GranularApprovalMode>>(value, path);
    const auto found = modes.find("granular");
    if (found != modes.end()) return found->second;
  } catch (const DecodingError&) {
    // A value with any fault is no policy.
  }
  return std::nullopt;
}

void decodeApprovalMode(ApprovalMode& into, const JSONValue& value, const CodingPath& path) {
  const auto text = value.stringValue();
  if (const auto mode = text ? ApprovalMode::fromRawValue(*text) : std::nullopt) {
    into = *mode;
  } else if (const auto granular = text ? std::nullopt : granularMode(value, path)) {
    into = *granular;
  } else {
    failCorrupted("Unsupported approval policy", path);
  }
}

JSONValue encodeApprovalMode(const ApprovalMode& mode) {
  const auto* granular = std::get_if<GranularApprovalMode>(&mode.value);
  if (!granular) return mode.rawValue();
  return JSONValue::object({{"granular", Codec<GranularApprovalMode>::encode(*granular)}});
}

}  // namespace

}  // namespace coding

}  // namespace ormel

ORMEL_DEFINE_WORDS(ApprovalMode::Policy)
ORMEL_DEFINE_CONSTANT_RECORD(GranularApprovalMode)
ORMEL_DEFINE_CODEC_BY(ApprovalMode, decodeApprovalMode, encodeApprovalMode)
