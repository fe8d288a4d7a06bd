#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::testing {

/// An event in words, with all that tells it from another of a campaign; empty for those that `CampaignRequests` sees
/// to.
std::string describe(const ThreadEvent& event);

std::string textOf(const JSONValue& object, std::string_view key);

/// Reads what may be spelled in two ways; the first key that holds a text wins.
std::optional<std::string> textOf(const JSONValue& object, std::string_view key, std::string_view otherKey);

const JSONValue* objectIn(const JSONValue& object, std::string_view key);

/// The items of an operation and the events that they make, from the server's lines alone. It shares nothing with the
/// run: no parser, no merging.
class ExpectedItems {
 public:
  using Events = std::vector<std::string>;

  void clear();

  /// The events of a notification about an item, a plan, tokens, or of a notice; none if it makes none.
  Events notified(const std::string& method, const JSONValue& params);

  /// The events of a turn's end, but for the last. `turn` is what ended it.
  Events completed(const JSONValue& turn, const std::string& turnID);

  /// The turn's tokens, as its last event tells them.
  std::string usage() const;

  Events userWasAsked(const std::string& itemID);
  Events userHasAnswered(const std::string& itemID);

 private:
  struct Item {
    std::string kind;
    std::string text;
  };

  static std::optional<std::pair<std::string, Item>> itemIn(const JSONValue& value);
  static Item planOf(const JSONValue& entries);
  Events whole(const std::string& verb, const JSONValue& params);
  Events grown(const std::string& kind, const JSONValue& params, bool needsItem);
  std::string told(const std::string& verb, const std::string& id) const;

  std::map<std::string, Item> items_;
  std::optional<std::string> usage_;
};

}  // namespace ormel::testing
