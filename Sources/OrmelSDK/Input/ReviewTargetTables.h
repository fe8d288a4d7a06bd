#pragma once

#include <array>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Input/ReviewTarget.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ReviewDelivery> {
  static constexpr auto words =
      closed(std::array{Word{ReviewDelivery::inline_, "inline"}, Word{ReviewDelivery::detached, "detached"}});
};
ORMEL_DECLARE_ENUMERATION(ReviewDelivery)

/// A target is sent and never received, so it is only written.
ORMEL_DECLARE_PRINTED(ReviewTarget)
