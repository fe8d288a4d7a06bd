#pragma once

#include <iosfwd>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

// The values that calls which share a plugin send, apart from the many records that describe plugins. Every type here
// has a JSON form.
namespace ormel {

/// The kind of principal that a plugin is shared with.
enum class PluginSharePrincipalType { user, group, workspace };
std::ostream& operator<<(std::ostream& stream, const PluginSharePrincipalType& value);

/// The role that a principal can be given for a shared plugin. Nobody can be made its owner.
enum class PluginShareTargetRole { reader, editor };
std::ostream& operator<<(std::ostream& stream, const PluginShareTargetRole& value);

/// A principal that a plugin is to be shared with, and its role.
struct PluginShareTarget {
  PluginSharePrincipalType principalType = PluginSharePrincipalType::user;
  std::string principalID;
  PluginShareTargetRole role = PluginShareTargetRole::reader;
  friend bool operator==(const PluginShareTarget&, const PluginShareTarget&);
  friend std::ostream& operator<<(std::ostream& stream, const PluginShareTarget& value);
};

}  // namespace ormel
