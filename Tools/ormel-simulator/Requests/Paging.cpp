#include "ormel-simulator/Requests/Paging.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "OrmelSDK/Base/Error.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr double usualLimit = 25;
constexpr double greatestLimit = 100;

std::size_t limitOf(const JSONValue& params) {
  const JSONValue limit = anyMember(params, "limit");
  if (limit.isNull()) return static_cast<std::size_t>(usualLimit);
  const double count = limit.numberValue().value_or(0);
  if (count < 1 || std::trunc(count) != count) throw Refusal(invalidParams, "limit must be a whole number from 1 on");
  return static_cast<std::size_t>(std::min(count, greatestLimit));
}

PageOrder orderOf(const JSONValue& params, PageOrder usualOrder) {
  const JSONValue direction = anyMember(params, "sortDirection");
  if (direction.isNull()) return usualOrder;
  if (direction == JSONValue("asc")) return PageOrder::ascending;
  if (direction == JSONValue("desc")) return PageOrder::descending;
  throw Refusal(invalidParams, "sortDirection must be asc or desc");
}

JSONValue cursorAt(const PagePlace& place) { return JSONValue::array({place.value, place.id}).encode(); }

std::optional<PagePlace> cursorOf(const JSONValue& params) {
  const JSONValue cursor = anyMember(params, "cursor");
  if (cursor.isNull()) return std::nullopt;
  const Refusal refusal(invalidParams, "cursor is none that was given out: " + cursor.encode());
  try {
    const JSONValue value = JSONValue::decode(cursor.stringValue().value_or(""));
    const auto* parts = value.arrayValue();
    if (!parts || parts->size() != 2) throw refusal;
    const auto number = (*parts)[0].numberValue();
    const auto id = (*parts)[1].stringValue();
    if (number && id) return PagePlace{*number, std::string(*id)};
  } catch (const Refusal&) {
    throw;
  } catch (const Error&) {
    throw refusal;
  }
  throw refusal;
}

}  // namespace

JSONValue pageOf(std::vector<PagedElement> elements, const JSONValue& params, PageOrder usualOrder) {
  const bool descends = orderOf(params, usualOrder) == PageOrder::descending;
  const auto comesBefore = [&](const PagePlace& left, const PagePlace& right) {
    return descends ? right < left : left < right;
  };
  const std::size_t limit = limitOf(params);
  if (const auto cursor = cursorOf(params)) {
    std::erase_if(elements, [&](const PagedElement& element) { return !comesBefore(*cursor, element.place); });
  }
  std::sort(elements.begin(), elements.end(),
            [&](const PagedElement& left, const PagedElement& right) { return comesBefore(left.place, right.place); });
  std::vector<JSONValue> data;
  for (const PagedElement& element : elements) {
    if (data.size() < limit) data.push_back(element.json());
  }
  JSONObjectBuilder page;
  page.set("data", JSONValue::array(data));
  if (data.size() < elements.size()) page.set("nextCursor", cursorAt(elements[data.size() - 1].place));
  if (!data.empty()) page.set("backwardsCursor", cursorAt(elements.front().place));
  return page.build();
}

}  // namespace ormel::simulator
