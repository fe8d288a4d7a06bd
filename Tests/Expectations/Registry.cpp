#include "Expectations/Registry.h"

namespace ormel::tests {

const RegisteredType* Registry::find(std::string_view name) const {
  const auto found = types_.find(name);
  return found == types_.end() ? nullptr : &found->second;
}

const Registry& registry() {
  static const Registry all = [] {
    Registry filled;
    registerInput(filled);
    registerItems(filled);
    registerHandlers(filled);
    registerRecords(filled);
    registerEvents(filled);
    registerAccountRecords(filled);
    registerCallWords(filled);
    registerCatalogueRecords(filled);
    registerConfigRecords(filled);
    registerModelRecords(filled);
    registerPluginRecords(filled);
    registerThreadLists(filled);
    return filled;
  }();
  return all;
}

}  // namespace ormel::tests
