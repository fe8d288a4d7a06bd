#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Catalogue/CatalogueState.h"

namespace ormel::simulator {

/// A login: "parlane", which is an account, or "apiKey", which is not.
struct LoggedIn {
  std::string type;

  bool isParlane() const { return type == "parlane"; }
};

/// The present login, if any. A login that was started is complete once the pretended user has had the time for it,
/// also when its process has ended.
std::optional<LoggedIn> loggedIn(const CatalogueDocument& state);

inline constexpr const char* parlanePlan = "gardener";

/// Fails with `Refusal` unless a Parlane account is logged in.
void requireParlane(const CatalogueDocument& state, const std::string& method);

}  // namespace ormel::simulator
