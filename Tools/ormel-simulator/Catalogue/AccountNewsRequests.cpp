#include <array>
#include <chrono>
#include <cstdio>

#include "ormel-simulator/Catalogue/AccountState.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Requests/AgentTime.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/NewID.h"

namespace ormel::simulator {

namespace {

constexpr auto tokensOfLastDays = std::to_array<int>({48'200, 51'750, 0, 12'300, 96'400, 73'050, 20'900});
constexpr double secondsBetweenNudges = 24.0 * 60 * 60;

const JSONValue& workspaceMessages() {
  static const JSONValue value = JSONValue::decode(R"json({
  "featureEnabled": true,
  "messages": [
    {"messageId": "message-2", "messageType": "headline", "messageBody": "The greenhouse moves on Friday",
     "createdAt": 1790400000, "archivedAt": null},
    {"messageId": "message-1", "messageType": "announcement",
     "messageBody": "Everybody in the workspace may share plugins now.",
     "createdAt": 1790000000, "archivedAt": 1790300000}
  ]
})json");
  return value;
}

std::string dateText(std::chrono::sys_days day) {
  const std::chrono::year_month_day date(day);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return text.data();
}

JSONValue dailyUsage() {
  const auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
  std::vector<JSONValue> buckets;
  auto day = today - std::chrono::days(static_cast<int>(tokensOfLastDays.size()) - 1);
  for (const int tokens : tokensOfLastDays) {
    buckets.push_back(JSONValue::object({{"startDate", dateText(day)}, {"tokens", tokens}}));
    day += std::chrono::days(1);
  }
  return JSONValue::array(buckets);
}

JSONValue readUsage(Catalogue& catalogue, const RequestParams&) {
  requireParlane(catalogue.state().read(), "account/usage/read");
  return JSONValue::object({{"summary", JSONValue::object({{"lifetimeTokens", 5'120'400},
                                                           {"peakDailyTokens", 96'400},
                                                           {"longestRunningTurnSec", 1'260},
                                                           {"currentStreakDays", 4},
                                                           {"longestStreakDays", 19}})},
                            {"dailyUsageBuckets", dailyUsage()}});
}

JSONValue readWorkspaceMessages(Catalogue& catalogue, const RequestParams&) {
  requireParlane(catalogue.state().read(), "account/workspaceMessages/read");
  return workspaceMessages();
}

JSONValue sendNudge(Catalogue& catalogue, const RequestParams& params) {
  const std::string type = params.word("creditType", {"credits", "usage_limit"});
  bool isTooSoon = false;
  catalogue.state().change([&](CatalogueDocument& state) {
    requireParlane(state, "account/sendAddCreditsNudgeEmail");
    const double last = state.at({"nudges", type}).numberValue().value_or(0);
    isTooSoon = secondsNow() < last + secondsBetweenNudges;
    if (!isTooSoon) state.put({"nudges", type}, secondsNow());
  });
  return JSONValue::object({{"status", isTooSoon ? "cooldownActive" : "sent"}});
}

JSONValue uploadFeedback(Catalogue& catalogue, const RequestParams& params) {
  params.text("classification");
  params.textIfGiven("reason");
  params.flag("includeLogs");
  params.textsIfGiven("extraLogFiles");
  params.checkTextsByName("tags");
  const auto thread = params.textIfGiven("threadId");
  if (thread) catalogue.settings().requireThread(*thread);
  return JSONValue::object({{"threadId", thread.value_or(newID())}});
}

constexpr auto accountNewsRows = std::to_array<CatalogueRequest>({
    {"account/usage/read", readUsage},
    {"account/workspaceMessages/read", readWorkspaceMessages},
    {"account/sendAddCreditsNudgeEmail", sendNudge},
    {"feedback/upload", uploadFeedback},
});

}  // namespace

CatalogueRequests accountNewsRequests() { return accountNewsRows; }

}  // namespace ormel::simulator
