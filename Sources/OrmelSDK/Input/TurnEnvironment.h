#pragma once

#include <iosfwd>
#include <string>

namespace ormel {

/// An execution environment that a turn may use, and a folder in it. Has no JSON form.
struct TurnEnvironment {
  std::string environmentID;
  std::string workingDirectory;
  friend bool operator==(const TurnEnvironment&, const TurnEnvironment&);
  friend std::ostream& operator<<(std::ostream& stream, const TurnEnvironment& value);
};

}  // namespace ormel
