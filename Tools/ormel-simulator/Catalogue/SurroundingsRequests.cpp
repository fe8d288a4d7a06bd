#include <algorithm>
#include <array>

#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/NewID.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

JSONValue addEnvironment(Catalogue& catalogue, const RequestParams& params) {
  const std::string id = params.text("environmentId");
  const std::string url = params.text("execServerUrl");
  const auto schemes = std::to_array<std::string_view>({"ws://", "wss://", "http://", "https://"});
  if (std::none_of(schemes.begin(), schemes.end(), [&](std::string_view scheme) { return url.starts_with(scheme); })) {
    throw Refusal(invalidParams, "execServerUrl must be an address of ws, wss, http or https: " + url);
  }
  catalogue.state().change([&](CatalogueDocument& state) { state.put({"environments", id}, url); });
  return JSONValue::object();
}

JSONValue remoteControlJSON(const CatalogueDocument& state) {
  const JSONValue environment = state.at({"remoteControl", "environmentId"});
  return JSONValue::object({{"status", environment.isNull() ? "disabled" : "connected"},
                            {"serverName", "ormel-simulator"},
                            {"installationId", state.at({"remoteControl", "installationId"})},
                            {"environmentId", environment}});
}

void identify(CatalogueDocument& state) {
  const KeyPath path = {"remoteControl", "installationId"};
  if (state.at(path).isNull()) state.put(path, newID());
}

JSONValue enableRemoteControl(Catalogue& catalogue, const RequestParams&) {
  return remoteControlJSON(catalogue.state().change([](CatalogueDocument& state) {
    identify(state);
    const KeyPath path = {"remoteControl", "environmentId"};
    if (state.at(path).isNull()) state.put(path, newID());
  }));
}

JSONValue disableRemoteControl(Catalogue& catalogue, const RequestParams&) {
  return remoteControlJSON(catalogue.state().change([](CatalogueDocument& state) {
    identify(state);
    state.put({"remoteControl", "environmentId"}, {});
  }));
}

JSONValue readRemoteControl(Catalogue& catalogue, const RequestParams&) {
  return remoteControlJSON(catalogue.state().change(identify));
}

JSONValue readSandboxReadiness(Catalogue& catalogue, const RequestParams&) {
  const bool isSetUp = !catalogue.state().read().at({"windowsSandbox"}).isNull();
  return JSONValue::object({{"status", isSetUp ? "ready" : "notConfigured"}});
}

JSONValue startSandboxSetup(Catalogue& catalogue, const RequestParams& params) {
  const std::string mode = params.word("mode", {"elevated", "unelevated"});
  params.textIfGiven("cwd");
  catalogue.state().change([&](CatalogueDocument& state) { state.put({"windowsSandbox"}, mode); });
  return JSONValue::object({{"started", true}});
}

constexpr auto surroundingsRows = std::to_array<CatalogueRequest>({
    {"environment/add", addEnvironment},
    {"remoteControl/enable", enableRemoteControl},
    {"remoteControl/disable", disableRemoteControl},
    {"remoteControl/status/read", readRemoteControl},
    {"windowsSandbox/readiness", readSandboxReadiness},
    {"windowsSandbox/setupStart", startSandboxSetup},
});

}  // namespace

CatalogueRequests surroundingsRequests() { return surroundingsRows; }

}  // namespace ormel::simulator
