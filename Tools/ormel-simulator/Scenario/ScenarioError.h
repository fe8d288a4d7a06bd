#pragma once

#include <cstddef>
#include <string>

#include "OrmelSDK/Base/Error.h"

namespace ormel::simulator {

/// A place in a scenario file; both counted from 1, the column in bytes.
struct SourcePlace {
  std::size_t line = 1;
  std::size_t column = 1;
  friend bool operator==(const SourcePlace&, const SourcePlace&) = default;
};

/// A scenario that cannot be read, or that asks for what cannot be done. `what()` is "file:line:column: text".
class ScenarioError : public Error {
 public:
  ScenarioError(const std::string& fileName, SourcePlace place, const std::string& text)
      : Error(fileName + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " + text),
        place_(place) {}

  SourcePlace place() const noexcept { return place_; }

 private:
  SourcePlace place_;
};

}  // namespace ormel::simulator
