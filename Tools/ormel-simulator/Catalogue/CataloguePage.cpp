#include "ormel-simulator/Catalogue/CataloguePage.h"

#include <utility>

#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Paging.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

JSONValue pageOfListing(const std::string& listing, const std::vector<JSONValue>& elements, const char* idKey,
                        const RequestParams& params) {
  const std::string mark = listing + " ";
  const auto cursor = textMember(params.json(), "cursor");
  if (cursor && cursor->find("\"" + mark) == std::string::npos) {
    throw Refusal(invalidParams, "cursor is none that " + listing + " gave out: " + *cursor);
  }
  std::vector<PagedElement> paged;
  for (const JSONValue& element : elements) {
    const auto place = static_cast<double>(paged.size());
    paged.push_back({{place, mark + textMember(element, idKey).value_or("")}, [element] { return element; }});
  }
  return pageOf(std::move(paged), params.json(), PageOrder::ascending);
}

}  // namespace ormel::simulator
