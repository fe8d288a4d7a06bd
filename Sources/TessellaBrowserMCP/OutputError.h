#pragma once

#include <string>

#include "OrmelSDK/Base/Error.h"

namespace ormel {

/// Standard output is closed or broken: no client is left to answer.
class OutputError : public Error {
 public:
  explicit OutputError(int errorNumber)
      : Error("Could not write to standard output (errno " + std::to_string(errorNumber) + ").") {}
};

}  // namespace ormel
