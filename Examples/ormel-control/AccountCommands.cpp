#include "AccountCommands.h"

#include <cstdint>
#include <utility>

#include "OrmelSDK/OrmelSDK.h"
#include "OrmelSDK/Records/AccountRecords.h"
#include "Values.h"

namespace ormel::control {

namespace {

Table factsAbout(const OrmelAccount& account) {
  Table table{{{"FIELD", true}, "VALUE"}, {}, ""};
  table.rows.push_back({"type", account.type});
  if (account.email) table.rows.push_back({"email", *account.email});
  if (account.planType) table.rows.push_back({"plan", *account.planType});
  return table;
}

std::string lengthText(const RateLimitWindowSnapshot& window) {
  constexpr std::int64_t minutesOfHour = 60;
  constexpr std::int64_t minutesOfDay = 24 * minutesOfHour;
  if (!window.windowDurationMins) return "";
  const double minutes = *window.windowDurationMins;
  // Beyond this a number is no length of a window.
  const bool isWhole = minutes >= 0 && minutes < 1e9;
  const std::int64_t whole = isWhole ? static_cast<std::int64_t>(minutes) : 0;
  if (whole > 0 && whole % minutesOfDay == 0) return std::to_string(whole / minutesOfDay) + " d";
  if (whole > 0 && whole % minutesOfHour == 0) return std::to_string(whole / minutesOfHour) + " h";
  return numberText(minutes) + " min";
}

void addWindow(Table& table, const std::string& limit, const char* name,
               const std::optional<RateLimitWindowSnapshot>& window) {
  if (!window) return;
  table.rows.push_back({limit, name, lengthText(*window), numberText(window->usedPercent) + "%",
                        window->resetsAt ? timeText(*window->resetsAt) : ""});
}

void addLimit(Table& table, const std::string& name, const RateLimitSnapshot& limit) {
  addWindow(table, name, "primary", limit.primary);
  addWindow(table, name, "secondary", limit.secondary);
  if (!limit.individualLimit) return;
  const SpendControlLimitSnapshot& spending = *limit.individualLimit;
  table.rows.push_back({name, "spending", spending.limit, numberText(100 - spending.remainingPercent) + "%",
                        timeText(spending.resetsAt)});
}

std::string nameOf(const RateLimitSnapshot& limit, const std::string& otherwise) {
  return limit.limitName.value_or(limit.limitID.value_or(otherwise));
}

Table limitsOf(const AccountRateLimitsResponse& response) {
  Table table{{{"LIMIT", true}, "KIND", "WINDOW", "USED", "RESETS"}, {}, "The account has no rate limits."};
  if (!response.rateLimitsByLimitID) {
    addLimit(table, nameOf(response.rateLimits, "all"), response.rateLimits);
    return table;
  }
  for (const auto& [id, limit] : *response.rateLimitsByLimitID) addLimit(table, nameOf(limit, id), limit);
  return table;
}

Table creditsOf(const AccountRateLimitsResponse& response) {
  Table table{{{"FIELD", true}, "VALUE"}, {}, ""};
  if (const auto& credits = response.rateLimits.credits) {
    const std::string balance = credits->balance.value_or(yesOrNo(credits->hasCredits));
    table.rows.push_back({"credits", credits->unlimited ? "unlimited" : balance});
  }
  if (const auto& resets = response.rateLimitResetCredits) {
    table.rows.push_back({"resets of the limits left", std::to_string(resets->availableCount)});
  }
  return table;
}

Table summaryOf(const AccountTokenUsageSummary& summary) {
  Table table{{{"FIELD", true}, "VALUE"}, {}, ""};
  const auto add = [&](const char* field, const std::optional<std::int64_t>& value) {
    if (value) table.rows.push_back({field, std::to_string(*value)});
  };
  add("tokens in all", summary.lifetimeTokens);
  add("tokens on the busiest day", summary.peakDailyTokens);
  add("longest turn, seconds", summary.longestRunningTurnSeconds);
  add("days in a row", summary.currentStreakDays);
  add("most days in a row", summary.longestStreakDays);
  return table;
}

}  // namespace

Task<Report> readAccount(Server server) {
  const AccountReadResponse account = co_await server.session.readAccount();
  Report report;
  JSONObjectBuilder document;
  document.set("account", encode(account));
  if (!account.account) {
    report.remarks.emplace_back("Nobody is signed in.");
    report.document = document.build();
    co_return report;
  }
  report.tables.push_back(factsAbout(*account.account));
  try {
    const AccountRateLimitsResponse limits = co_await server.session.readAccountRateLimits();
    document.set("rateLimits", encode(limits));
    report.tables.push_back(limitsOf(limits));
    report.tables.push_back(creditsOf(limits));
  } catch (const AppServerRPCError& error) {
    // Not every account has any.
    report.remarks.emplace_back(error.what());
  }
  report.document = document.build();
  co_return report;
}

Task<Report> readUsage(Server server) {
  const AccountTokenUsageResponse usage = co_await server.session.readAccountUsage();
  Report report;
  report.document = encode(usage);
  report.tables.push_back(summaryOf(usage.summary));
  Table days{{"DAY", "TOKENS"}, {}, "There are no figures by day."};
  if (usage.dailyUsageBuckets) {
    for (const AccountTokenUsageDailyBucket& day : *usage.dailyUsageBuckets) {
      days.rows.push_back({day.startDate, std::to_string(day.tokens)});
    }
  }
  report.tables.push_back(std::move(days));
  co_return report;
}

}  // namespace ormel::control
