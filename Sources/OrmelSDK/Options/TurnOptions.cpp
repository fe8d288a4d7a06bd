#include "OrmelSDK/Options/TurnOptions.h"

namespace ormel {

TurnOptions::TurnOptions() = default;
TurnOptions::TurnOptions(const TurnOptions&) = default;
TurnOptions::TurnOptions(TurnOptions&&) noexcept = default;
TurnOptions& TurnOptions::operator=(const TurnOptions&) = default;
TurnOptions& TurnOptions::operator=(TurnOptions&&) noexcept = default;
TurnOptions::~TurnOptions() = default;

}  // namespace ormel
