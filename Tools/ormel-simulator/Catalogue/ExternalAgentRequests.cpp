#include <array>
#include <cmath>

#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Requests/AgentTime.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/NewID.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr double millisecondsInSecond = 1e3;

/// The kinds of things that another agent may have left, with what is said of each.
struct MigrationRow {
  const char* itemType;
  const char* description;
  bool isOfHome;
};

constexpr auto migrations = std::to_array<MigrationRow>({
    {"CONFIG", "Settings of Velnor Desk, to become settings of Ormel", true},
    {"SKILLS", "3 skills of Velnor Desk", true},
    {"INSTRUCTIONS", "Instructions for the whole folder", false},
    {"MCP_SERVERS", "1 MCP server of the folder", false},
});

JSONValue migrationJSON(const MigrationRow& row, const JSONValue& folder) {
  return JSONValue::object({{"itemType", row.itemType},
                            {"description", row.description},
                            {"cwd", folder},
                            {"details", JSONValue::object({{"source", "velnor-desk"}})}});
}

JSONValue detectConfig(Catalogue&, const RequestParams& params) {
  const bool includesHome = params.flag("includeHome");
  const std::vector<std::string> folders = params.textsIfGiven("cwds").value_or(std::vector<std::string>());
  std::vector<JSONValue> items;
  for (const MigrationRow& row : migrations) {
    if (row.isOfHome && includesHome) items.push_back(migrationJSON(row, {}));
    for (const std::string& folder : folders) {
      if (!row.isOfHome) items.push_back(migrationJSON(row, folder));
    }
  }
  return JSONValue::object({{"items", JSONValue::array(items)}});
}

bool isKnownItem(const std::string& itemType) {
  for (const MigrationRow& row : migrations) {
    if (itemType == row.itemType) return true;
  }
  return false;
}

JSONValue importConfig(Catalogue& catalogue, const RequestParams& params) {
  const auto source = params.textIfGiven("source");
  std::vector<JSONValue> successes;
  std::vector<JSONValue> failures;
  for (const RequestParams& item : params.objects("migrationItems")) {
    const std::string itemType = item.text("itemType");
    item.text("description");
    item.textIfGiven("cwd");
    if (isKnownItem(itemType)) {
      successes.push_back(item.json());
    } else {
      failures.push_back(with(item.json(), "error", "there is no way to import " + itemType));
    }
  }
  const std::string id = newID();
  const JSONValue history = JSONValue::object({{"importId", id},
                                               {"source", textOrNull(source)},
                                               {"completedAtMs", std::floor(secondsNow() * millisecondsInSecond)},
                                               {"successes", JSONValue::array(successes)},
                                               {"failures", JSONValue::array(failures)}});
  catalogue.state().change([&](CatalogueDocument& state) {
    std::vector<JSONValue> imports = elementsOf(state.at({"imports"}));
    imports.push_back(history);
    state.put({"imports"}, JSONValue::array(imports));
  });
  return JSONValue::object({{"importId", id}});
}

JSONValue readImportHistories(Catalogue& catalogue, const RequestParams&) {
  return JSONValue::object({{"data", JSONValue::array(elementsOf(catalogue.state().read().at({"imports"})))}});
}

constexpr auto externalAgentRows = std::to_array<CatalogueRequest>({
    {"externalAgentConfig/detect", detectConfig},
    {"externalAgentConfig/import", importConfig},
    {"externalAgentConfig/import/readHistories", readImportHistories},
});

}  // namespace

CatalogueRequests externalAgentRequests() { return externalAgentRows; }

}  // namespace ormel::simulator
