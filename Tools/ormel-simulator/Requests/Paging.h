#pragma once

#include <functional>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// Where an element stands in a listing; no two of a listing stand at the same place.
struct PagePlace {
  double value = 0;
  std::string id;
  friend auto operator<=>(const PagePlace&, const PagePlace&) = default;
};

struct PagedElement {
  PagePlace place;
  /// Asked for the elements of the page only.
  std::function<JSONValue()> json;
};

enum class PageOrder { ascending, descending };

/// The page that "cursor", "limit" and "sortDirection" of the params choose. A cursor is a place, so that what is added
/// or removed between two pages neither repeats nor hides another element. Fails with `Refusal`.
JSONValue pageOf(std::vector<PagedElement> elements, const JSONValue& params, PageOrder usualOrder);

}  // namespace ormel::simulator
