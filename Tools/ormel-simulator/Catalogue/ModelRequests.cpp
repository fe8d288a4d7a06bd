#include <array>

#include "ormel-simulator/Catalogue/CataloguePage.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Catalogue/ModelData.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

JSONValue listModels(Catalogue&, const RequestParams& params) {
  const bool includesHidden = params.flag("includeHidden");
  std::vector<JSONValue> models = elementsOf(modelDescriptors());
  std::erase_if(models, [&](const JSONValue& model) { return flagMember(model, "hidden") && !includesHidden; });
  return pageOfListing("model/list", models, "id", params);
}

JSONValue readProviderCapabilities(Catalogue&, const RequestParams&) {
  return JSONValue::object({{"namespaceTools", true}, {"imageGeneration", false}, {"webSearch", true}});
}

JSONValue listPermissionProfiles(Catalogue&, const RequestParams& params) {
  params.textIfGiven("cwd");
  return pageOfListing("permissionProfile/list", elementsOf(permissionProfiles()), "id", params);
}

constexpr auto modelRows = std::to_array<CatalogueRequest>({
    {"model/list", listModels},
    {"modelProvider/capabilities/read", readProviderCapabilities},
    {"permissionProfile/list", listPermissionProfiles},
});

}  // namespace

CatalogueRequests modelRequests() { return modelRows; }

}  // namespace ormel::simulator
