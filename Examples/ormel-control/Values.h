#pragma once

#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

// Values of records as the texts of table cells.
namespace ormel::control {

inline std::string yesOrNo(bool value) { return value ? "yes" : "no"; }

/// The parts with ", " in between.
std::string joined(const std::vector<std::string>& parts);

/// Whole numbers without a fraction, others as JSON writes them.
std::string numberText(double value);

/// Seconds since the Unix epoch as a time of day in UTC; as the number that it is where it can be no such time.
std::string timeText(double seconds);

/// A text as it is, anything else as JSON.
std::string plainText(const JSONValue& value);

/// The members of the object in the order of their keys.
std::vector<JSONMember> sortedMembers(const JSONObject& object);

}  // namespace ormel::control
