#pragma once

#include <optional>
#include <string_view>

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Adds a member in its wire form. An absent value adds none, which leaves the choice to the server.
template <typename Value>
void setIfPresent(JSONObjectBuilder& object, std::string_view key, const std::optional<Value>& value) {
  if (value) object.set(key, coding::Codec<Value>::encode(*value));
}

/// The server does not know every policy that an application may state.
inline void setIfPresent(JSONObjectBuilder& object, std::string_view key, const std::optional<ApprovalMode>& mode) {
  if (mode) object.set(key, mode->jsonValue());
}

}  // namespace ormel::detail
