#include <array>

#include "ormel-simulator/Catalogue/AccountState.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Requests/AgentTime.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/NewID.h"

namespace ormel::simulator {

namespace {

constexpr double millisecondsOfSecond = 1e3;

JSONValue accountJSON(const std::optional<LoggedIn>& account) {
  if (!account) return {};
  if (!account->isParlane()) return JSONValue::object({{"type", account->type}});
  return JSONValue::object({{"type", account->type},
                            {"email", "robin@parlane.example"},
                            {"planType", parlanePlan},
                            {"credentialSource", JSONValue::object({{"type", "browser"}})}});
}

JSONValue readAccount(Catalogue& catalogue, const RequestParams& params) {
  params.flag("refreshToken");
  return JSONValue::object(
      {{"account", accountJSON(loggedIn(catalogue.state().read()))}, {"requiresVelnorAuth", true}});
}

void announceAccount(Catalogue& catalogue) {
  const auto account = loggedIn(catalogue.state().read());
  const bool isParlane = account && account->isParlane();
  catalogue.client().notify("account/updated",
                            JSONValue::object({{"authMode", account ? JSONValue(account->type) : JSONValue()},
                                               {"planType", isParlane ? JSONValue(parlanePlan) : JSONValue()}}));
}

void announceLogin(Catalogue& catalogue, const JSONValue& loginID, const std::optional<std::string>& error) {
  catalogue.client().notify(
      "account/login/completed",
      JSONValue::object({{"loginId", loginID}, {"success", !error}, {"error", textOrNull(error)}}));
}

/// Nothing more is said of a login that was cancelled, or that another one or a logout has overtaken.
void completeLogin(Catalogue& catalogue, const std::string& loginID) {
  bool completed = false;
  catalogue.state().change([&](CatalogueDocument& state) {
    completed = state.at({"account", "pending", "loginId"}) == JSONValue(loginID);
    if (completed) state.put({"account"}, JSONValue::object({{"type", "parlane"}}));
  });
  if (!completed) return;
  announceLogin(catalogue, loginID, std::nullopt);
  announceAccount(catalogue);
}

JSONValue startParlaneLogin(Catalogue& catalogue, const std::string& type) {
  const std::string loginID = newID();
  const auto time = catalogue.settings().loginTime;
  const double completesAt = secondsNow() + static_cast<double>(time.count()) / millisecondsOfSecond;
  catalogue.state().change([&](CatalogueDocument& state) {
    if (const auto account = loggedIn(state)) state.put({"account", "type"}, account->type);
    state.put({"account", "pending"}, JSONValue::object({{"loginId", loginID}, {"completesAt", completesAt}}));
  });
  catalogue.later().after(time, [&catalogue, loginID] { completeLogin(catalogue, loginID); });
  JSONObjectBuilder result;
  result.set("type", type).set("loginId", loginID);
  if (type == "parlane") return result.set("authUrl", "https://login.parlane.example/start?login=" + loginID).build();
  result.set("verificationUrl", "https://login.parlane.example/device");
  return result.set("userCode", "FERN-2046").build();
}

// The key is looked at and forgotten.
JSONValue loginByKey(Catalogue& catalogue, const RequestParams& params) {
  params.text("apiKey");
  catalogue.state().change(
      [](CatalogueDocument& state) { state.put({"account"}, JSONValue::object({{"type", "apiKey"}})); });
  catalogue.later().after(std::chrono::milliseconds(0), [&catalogue] {
    announceLogin(catalogue, {}, std::nullopt);
    announceAccount(catalogue);
  });
  return JSONValue::object({{"type", "apiKey"}});
}

JSONValue startLogin(Catalogue& catalogue, const RequestParams& params) {
  const std::string type = params.word("type", {"parlane", "parlaneDeviceCode", "apiKey"});
  if (type == "apiKey") return loginByKey(catalogue, params);
  params.flag("ormelStreamlinedLogin");
  params.flag("useHostedLoginSuccessPage");
  params.wordIfGiven("appBrand", {"ormel", "parlane"});
  return startParlaneLogin(catalogue, type);
}

JSONValue cancelLogin(Catalogue& catalogue, const RequestParams& params) {
  const std::string loginID = params.text("loginId");
  bool cancelled = false;
  catalogue.state().change([&](CatalogueDocument& state) {
    const JSONValue pending = state.at({"account", "pending"});
    cancelled = textMember(pending, "loginId") == loginID && numberMember(pending, "completesAt") > secondsNow();
    if (cancelled) state.put({"account", "pending"}, {});
  });
  if (cancelled) announceLogin(catalogue, loginID, "Login was cancelled");
  return JSONValue::object({{"status", cancelled ? "cancelled" : "notFound"}});
}

JSONValue logout(Catalogue& catalogue, const RequestParams&) {
  catalogue.state().change([](CatalogueDocument& state) { state.put({"account"}, {}); });
  announceAccount(catalogue);
  return JSONValue::object();
}

JSONValue getAuthStatus(Catalogue& catalogue, const RequestParams& params) {
  const bool wantsToken = params.flag("includeToken");
  params.flag("refreshToken");
  const auto account = loggedIn(catalogue.state().read());
  const bool hasToken = wantsToken && account && account->isParlane();
  return JSONValue::object({{"authMethod", account ? JSONValue(account->type) : JSONValue()},
                            {"authToken", hasToken ? JSONValue("simulated-token") : JSONValue()},
                            {"requiresVelnorAuth", true}});
}

constexpr auto accountRows = std::to_array<CatalogueRequest>({
    {"account/read", readAccount},
    {"account/login/start", startLogin},
    {"account/login/cancel", cancelLogin},
    {"account/logout", logout},
    {"getAuthStatus", getAuthStatus},
});

}  // namespace

CatalogueRequests accountRequests() { return accountRows; }

}  // namespace ormel::simulator
