#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/Input/ThreadChoices.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The named set of permissions in force.
struct ActivePermissionProfile {
  std::string id;
  /// The profile that this one builds on.
  std::optional<std::string> extends;
  friend bool operator==(const ActivePermissionProfile&, const ActivePermissionProfile&);
  friend std::ostream& operator<<(std::ostream& stream, const ActivePermissionProfile& value);
};

/// The settings under which a thread runs its next turn.
struct ThreadSettings {
  std::string cwd;
  ApprovalMode approvalPolicy;
  ApprovalsReviewer approvalsReviewer = ApprovalsReviewer::user;
  /// The policy in the server's own words, kept whole.
  JSONValue sandboxPolicy;
  std::optional<ActivePermissionProfile> activePermissionProfile;
  std::string model;
  std::string modelProvider;
  std::optional<ServiceTier> serviceTier;
  std::optional<ModelReasoningEffort> effort;
  std::optional<ModelReasoningSummary> summary;
  CollaborationMode collaborationMode = CollaborationMode::defaultMode;
  std::optional<Personality> personality;
  friend bool operator==(const ThreadSettings&, const ThreadSettings&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadSettings& value);
};

}  // namespace ormel
