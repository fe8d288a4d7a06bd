#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// A notification as the server sent it.
struct AppServerRPCNotification {
  std::string method;
  /// JSON null if the server sent that; absent only without the member.
  std::optional<JSONValue> params;
  friend bool operator==(const AppServerRPCNotification&, const AppServerRPCNotification&) = default;
};

}  // namespace ormel::detail
