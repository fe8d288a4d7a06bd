#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Catalogue/CatalogueState.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/LaterSteps.h"
#include "ormel-simulator/Requests/RequestParams.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

struct CatalogueSettings {
  /// Where the state is kept; empty for nowhere.
  std::filesystem::path folder;
  /// "KEY=VALUE" each, as the client gave them on the command line.
  std::vector<std::string> configOverrides;
  /// How long the user takes to log in, as it is pretended.
  std::chrono::milliseconds loginTime{0};
  /// Fails with `Refusal` if there is no thread of that id.
  std::function<void(const std::string& id)> requireThread;
};

/// The state at one moment, and the configuration that results from it.
struct CatalogueView {
  CatalogueDocument state;
  /// The configuration of all layers.
  JSONValue config;
};

/// The simulated server's data besides threads: accounts, plugins, configuration, models, apps and the like. Most of it
/// is made up; changes by a client are kept, and show wherever they should.
class Catalogue {
 public:
  /// Client and later steps must outlive it.
  Catalogue(AgentClient& client, LaterSteps& later, CatalogueSettings settings);

  /// Adds the requests that it answers. It must outlive the table.
  void addRequests(RequestTable& table);

  CatalogueState& state() noexcept { return state_; }
  AgentClient& client() noexcept { return client_; }
  LaterSteps& later() noexcept { return later_; }
  const CatalogueSettings& settings() const noexcept { return settings_; }

  CatalogueView view() const;

 private:
  AgentClient& client_;
  LaterSteps& later_;
  CatalogueSettings settings_;
  CatalogueState state_;
};

/// A method, and what answers it.
struct CatalogueRequest {
  const char* method;
  JSONValue (*answer)(Catalogue& catalogue, const RequestParams& params);
};

using CatalogueRequests = std::span<const CatalogueRequest>;

}  // namespace ormel::simulator
