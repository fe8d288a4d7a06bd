#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

// Every type here has a JSON form.
namespace ormel {

/// A piece of another agent's configuration that can be taken over. It is sent back to choose it for an import, with
/// `null` for what is absent.
struct ExternalAgentConfigMigrationItem {
  /// The server's own word for the kind of piece.
  std::string itemType;
  /// A sentence for the user.
  std::string description;
  /// The directory that the piece belongs to, if it belongs to one.
  std::optional<std::string> cwd;
  std::optional<JSONValue> details;
  friend bool operator==(const ExternalAgentConfigMigrationItem&, const ExternalAgentConfigMigrationItem&);
  friend std::ostream& operator<<(std::ostream& stream, const ExternalAgentConfigMigrationItem& value);
};

/// The items that were found to import.
struct ExternalAgentConfigDetectResponse {
  std::vector<ExternalAgentConfigMigrationItem> items;
  friend bool operator==(const ExternalAgentConfigDetectResponse&, const ExternalAgentConfigDetectResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ExternalAgentConfigDetectResponse& value);
};

/// An import that has begun.
struct ExternalAgentConfigImportResponse {
  std::string importID;
  friend bool operator==(const ExternalAgentConfigImportResponse&, const ExternalAgentConfigImportResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ExternalAgentConfigImportResponse& value);
};

/// An import that is over.
struct ExternalAgentConfigImportHistory {
  std::string importID;
  /// Milliseconds since the Unix epoch.
  std::int64_t completedAtMilliseconds = 0;
  /// As the server gives them.
  std::vector<JSONValue> successes;
  /// As the server gives them.
  std::vector<JSONValue> failures;
  friend bool operator==(const ExternalAgentConfigImportHistory&, const ExternalAgentConfigImportHistory&);
  friend std::ostream& operator<<(std::ostream& stream, const ExternalAgentConfigImportHistory& value);
};

/// The imports that there were.
struct ExternalAgentConfigImportHistoriesReadResponse {
  std::vector<ExternalAgentConfigImportHistory> data;
  friend bool operator==(const ExternalAgentConfigImportHistoriesReadResponse&,
                         const ExternalAgentConfigImportHistoriesReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ExternalAgentConfigImportHistoriesReadResponse& value);
};

}  // namespace ormel
