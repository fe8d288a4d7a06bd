#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"

// Every type here has a JSON form.
namespace ormel {

/// A feature of the server that can be switched on and off.
struct ExperimentalFeature {
  std::string name;
  /// How mature the feature is, in the server's own word.
  std::string stage;
  std::optional<std::string> displayName;
  std::optional<std::string> description;
  /// A sentence that presents the feature to the user.
  std::optional<std::string> announcement;
  bool enabled = false;
  /// Whether the feature is on when nobody has chosen.
  bool defaultEnabled = false;
  friend bool operator==(const ExperimentalFeature&, const ExperimentalFeature&);
  friend std::ostream& operator<<(std::ostream& stream, const ExperimentalFeature& value);
};

/// A page of features.
struct ExperimentalFeatureListResponse {
  std::vector<ExperimentalFeature> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  friend bool operator==(const ExperimentalFeatureListResponse&, const ExperimentalFeatureListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ExperimentalFeatureListResponse& value);
};

/// The features that were switched.
struct ExperimentalFeatureEnablementSetResponse {
  /// Whether a feature is on now, by the features' names.
  std::map<std::string, bool> enablement;
  friend bool operator==(const ExperimentalFeatureEnablementSetResponse&,
                         const ExperimentalFeatureEnablementSetResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ExperimentalFeatureEnablementSetResponse& value);
};

}  // namespace ormel
