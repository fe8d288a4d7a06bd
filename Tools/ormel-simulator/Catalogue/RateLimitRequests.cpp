#include <algorithm>
#include <array>
#include <cmath>

#include "ormel-simulator/Catalogue/AccountState.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Requests/AgentTime.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr double secondsOfMinute = 60;
constexpr double minutesOfShortWindow = 5 * 60;
constexpr double minutesOfLongWindow = 7 * 24 * 60;
constexpr double creditsGrantedAt = 1'790'000'000;
constexpr double creditsExpireAt = 1'990'000'000;

constexpr auto creditIDs = std::to_array<const char*>({"credit-1", "credit-2", "credit-3"});

JSONValue windowJSON(double usedPercent, double minutes) {
  const double seconds = minutes * secondsOfMinute;
  const double resetsAt = (std::floor(secondsNow() / seconds) + 1) * seconds;
  return JSONValue::object({{"usedPercent", usedPercent}, {"windowDurationMins", minutes}, {"resetsAt", resetsAt}});
}

JSONValue limitsJSON(const CatalogueDocument& state) {
  constexpr double usedOfShort = 62;
  constexpr double usedOfLong = 35.5;
  const bool isReset = !elementsOf(state.at({"credits", "redeemed"})).empty();
  return JSONValue::object(
      {{"limitId", "ormel"},
       {"limitName", "Ormel"},
       {"primary", windowJSON(isReset ? 0 : usedOfShort, minutesOfShortWindow)},
       {"secondary", windowJSON(isReset ? 0 : usedOfLong, minutesOfLongWindow)},
       {"credits", JSONValue::object({{"hasCredits", true}, {"unlimited", false}, {"balance", "12.50"}})},
       {"individualLimit",
        JSONValue::object(
            {{"limit", "40.00"}, {"used", "10.00"}, {"remainingPercent", 75}, {"resetsAt", creditsExpireAt}})},
       {"spendControlReached", false},
       {"planType", parlanePlan},
       {"rateLimitReachedType", {}}});
}

JSONValue creditsJSON(const CatalogueDocument& state) {
  const JSONValue redeemed = state.at({"credits", "redeemed"});
  std::vector<JSONValue> credits;
  int available = 0;
  for (const char* id : creditIDs) {
    const bool isRedeemed = holdsText(redeemed, id);
    available += isRedeemed ? 0 : 1;
    credits.push_back(JSONValue::object({{"id", id},
                                         {"resetType", "ormelRateLimits"},
                                         {"status", isRedeemed ? "redeemed" : "available"},
                                         {"grantedAt", creditsGrantedAt},
                                         {"expiresAt", creditsExpireAt},
                                         {"title", "A fresh start"},
                                         {"description", "Empties all windows of the rate limits once"}}));
  }
  return JSONValue::object({{"availableCount", available}, {"credits", JSONValue::array(credits)}});
}

JSONValue readRateLimits(Catalogue& catalogue, const RequestParams&) {
  const CatalogueDocument state = catalogue.state().read();
  requireParlane(state, "account/rateLimits/read");
  const JSONValue limits = limitsJSON(state);
  return JSONValue::object({{"rateLimits", limits},
                            {"rateLimitsByLimitId", JSONValue::object({{"ormel", limits}})},
                            {"rateLimitResetCredits", creditsJSON(state)}});
}

/// Redeems the credit that was named, or the first that is left, and tells how it went.
std::string redeemCredit(CatalogueDocument& state, const std::optional<std::string>& wanted) {
  const auto isKnown = [](const std::string& id) {
    return std::find(creditIDs.begin(), creditIDs.end(), id) != creditIDs.end();
  };
  if (wanted && !isKnown(*wanted)) throw Refusal(invalidParams, "there is no credit with the creditId " + *wanted);
  std::vector<JSONValue> redeemed = elementsOf(state.at({"credits", "redeemed"}));
  const auto isLeft = [&](std::string_view id) { return !holdsText(JSONValue::array(redeemed), id); };
  if (wanted && !isLeft(*wanted)) return "alreadyRedeemed";
  const auto first = std::find_if(creditIDs.begin(), creditIDs.end(), isLeft);
  if (first == creditIDs.end()) return "noCredit";
  redeemed.push_back(wanted ? JSONValue(*wanted) : JSONValue(*first));
  state.put({"credits", "redeemed"}, JSONValue::array(redeemed));
  return "reset";
}

JSONValue consumeCredit(Catalogue& catalogue, const RequestParams& params) {
  const std::string key = params.text("idempotencyKey");
  const auto wanted = params.textIfGiven("creditId");
  std::string outcome;
  bool isRepeated = false;
  const CatalogueDocument state = catalogue.state().change([&](CatalogueDocument& newest) {
    requireParlane(newest, "account/rateLimitResetCredit/consume");
    const auto earlier = textMember(newest.at({"credits", "outcomes"}), key);
    isRepeated = earlier.has_value();
    outcome = isRepeated ? *earlier : redeemCredit(newest, wanted);
    newest.put({"credits", "outcomes", key}, outcome);
  });
  if (outcome == "reset" && !isRepeated) {
    catalogue.client().notify("account/rateLimits/updated", JSONValue::object({{"rateLimits", limitsJSON(state)}}));
  }
  return JSONValue::object({{"outcome", outcome}});
}

constexpr auto rateLimitRows = std::to_array<CatalogueRequest>({
    {"account/rateLimits/read", readRateLimits},
    {"account/rateLimitResetCredit/consume", consumeCredit},
});

}  // namespace

CatalogueRequests rateLimitRequests() { return rateLimitRows; }

}  // namespace ormel::simulator
