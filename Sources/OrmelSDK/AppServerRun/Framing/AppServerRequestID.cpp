#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"

#include <type_traits>

namespace ormel {

std::optional<AppServerRequestID> AppServerRequestID::fromJSONValue(const JSONValue& value) {
  if (const auto number = value.intValue()) return integer(*number);
  if (const auto text = value.stringValue()) return string(std::string(*text));
  return std::nullopt;
}

JSONValue AppServerRequestID::jsonValue() const {
  if (const auto* text = stringValue()) return JSONValue(*text);
  return JSONValue(*integerValue());
}

std::optional<std::int64_t> AppServerRequestID::integerValue() const noexcept {
  const auto* number = std::get_if<std::int64_t>(&payload_);
  return number ? std::optional(*number) : std::nullopt;
}

}  // namespace ormel

std::size_t std::hash<ormel::AppServerRequestID>::operator()(const ormel::AppServerRequestID& id) const noexcept {
  const auto payload = std::visit(
      [](const auto& value) noexcept { return std::hash<std::remove_cvref_t<decltype(value)>>()(value); }, id.payload_);
  // The odd constant spreads small integers, which hash to themselves, and sets the two forms apart.
  constexpr std::uint64_t spread = 0x9E3779B97F4A7C15u;
  const std::uint64_t ordinal = id.payload_.index() + 1;
  return static_cast<std::size_t>((std::uint64_t{payload} + ordinal) * spread ^ ordinal);
}
