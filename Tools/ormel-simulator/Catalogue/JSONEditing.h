#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// Leads from an object to a value inside of it.
using KeyPath = std::vector<std::string>;

/// The value at the path, or null.
JSONValue valueAt(const JSONValue& root, std::span<const std::string> path);

/// The object with another value at the path; objects on the way are made where there are none. Null removes.
JSONValue withValueAt(const JSONValue& root, std::span<const std::string> path, const JSONValue& value);

/// The object with another member.
JSONValue with(const JSONValue& object, std::string_view key, const JSONValue& value);

/// Members of objects are merged all the way down; anything else that is added takes the place of what was there.
/// Nulls that are added remove.
JSONValue merged(const JSONValue& base, const JSONValue& added);

/// The elements of an array; none of anything else.
std::vector<JSONValue> elementsOf(const JSONValue& array);

/// The keys of an object in ascending order; none of anything else.
std::vector<std::string> keysOf(const JSONValue& object);

bool holdsText(const JSONValue& array, std::string_view text);

JSONValue textsJSON(std::span<const std::string> texts);

}  // namespace ormel::simulator
