#pragma once

#include <cstdint>
#include <limits>

#include "OrmelSDK/Base/FatalError.h"

namespace ormel {

/// Hands out the ids of envelopes. An id is used up even if its envelope is never sent.
class EnvelopeCounter {
 public:
  explicit EnvelopeCounter(std::int64_t first = 1) noexcept : nextID_(first) {}

  /// Ends the process when no further id would exist: a repeated id would accept another request's reply.
  std::int64_t take() noexcept {
    if (nextID_ == std::numeric_limits<std::int64_t>::max()) detail::fatalError("The browser envelope ids are used up");
    return nextID_++;
  }

 private:
  std::int64_t nextID_;
};

}  // namespace ormel
