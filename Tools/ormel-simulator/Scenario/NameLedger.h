#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Scenario/ScenarioCursor.h"

namespace ormel::simulator {

/// Keeps account of the names in a scenario, so that a misspelt one is found before anything is played.
class NameLedger {
 public:
  enum class Kind { variable, clientRequest, serverRequest };

  explicit NameLedger(ScenarioCursor& cursor) : cursor_(cursor) {}

  /// Enters a name given by "as"; fails if it is no variable's name.
  void define(Kind kind, const std::string& name, SourcePlace place);
  void use(Kind kind, const std::string& name, SourcePlace place);

  /// Checks the words of an example and enters its captures.
  void enterExample(const JSONValue& example, SourcePlace place);
  /// Enters the variables that a payload uses.
  void enterPayload(const JSONValue& payload, SourcePlace place);
  /// Enters the variables that a text uses by `${name}`.
  void enterText(std::string_view text, SourcePlace place);

  /// Fails at the first use of a name that nothing defines.
  void check() const;

 private:
  struct Use {
    Kind kind;
    std::string name;
    SourcePlace place;
  };

  void enterExampleText(std::string_view text, SourcePlace place);

  ScenarioCursor& cursor_;
  std::map<Kind, std::set<std::string>> defined_;
  std::vector<Use> uses_;
};

}  // namespace ormel::simulator
