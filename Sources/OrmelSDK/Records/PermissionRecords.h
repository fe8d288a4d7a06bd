#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"

// Every type here has a JSON form.
namespace ormel {

/// A permission profile that a thread can be given.
struct PermissionProfileSummary {
  std::string id;
  std::optional<std::string> description;
  /// Whether the user may choose it; true unless the server says otherwise.
  bool allowed = true;
  friend bool operator==(const PermissionProfileSummary&, const PermissionProfileSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const PermissionProfileSummary& value);
};

/// A page of permission profiles.
struct PermissionProfileListResponse {
  std::vector<PermissionProfileSummary> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  friend bool operator==(const PermissionProfileListResponse&, const PermissionProfileListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PermissionProfileListResponse& value);
};

}  // namespace ormel
