#include "ormel-simulator/Catalogue/AccountState.h"

#include "ormel-simulator/Requests/AgentTime.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

std::optional<LoggedIn> loggedIn(const CatalogueDocument& state) {
  const JSONValue pending = state.at({"account", "pending"});
  if (!pending.isNull() && numberMember(pending, "completesAt") <= secondsNow()) return LoggedIn{"parlane"};
  const auto type = textMember(state.at({"account"}), "type");
  return type ? std::optional(LoggedIn{*type}) : std::nullopt;
}

void requireParlane(const CatalogueDocument& state, const std::string& method) {
  const auto account = loggedIn(state);
  if (!account) throw Refusal(invalidRequest, method + " needs an account; log in by account/login/start first");
  if (!account->isParlane()) {
    throw Refusal(invalidRequest, method + " needs a Parlane account; an API key is logged in");
  }
}

}  // namespace ormel::simulator
