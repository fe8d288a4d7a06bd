#pragma once

#include <iosfwd>
#include <optional>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The permissions that are asked for, each in the server's own words.
struct RequestPermissionProfile {
  std::optional<JSONValue> network;
  std::optional<JSONValue> fileSystem;
  friend bool operator==(const RequestPermissionProfile&, const RequestPermissionProfile&);
  friend std::ostream& operator<<(std::ostream& stream, const RequestPermissionProfile& value);
};

/// The permissions that are granted; an empty profile grants nothing.
struct GrantedPermissionProfile {
  std::optional<JSONValue> network;
  std::optional<JSONValue> fileSystem;
  friend bool operator==(const GrantedPermissionProfile&, const GrantedPermissionProfile&);
  friend std::ostream& operator<<(std::ostream& stream, const GrantedPermissionProfile& value);
};

/// Reads the profile in the server's request: `network`, and `fileSystem` or else `file_system`, each kept whole
/// whatever it is, null too.
RequestPermissionProfile decodePermissionProfile(const JSONObject& object);

/// An object of the permissions that are present.
JSONValue permissionProfileJSONObject(const GrantedPermissionProfile& profile);
JSONValue permissionProfileJSONObject(const RequestPermissionProfile& profile);

/// How long granted permissions last.
enum class PermissionGrantScope { turn, session };
std::ostream& operator<<(std::ostream& stream, const PermissionGrantScope& value);

}  // namespace ormel
