#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Handlers/ApprovalDecision.h"
#include "OrmelSDK/Handlers/PermissionProfile.h"
#include "OrmelSDK/Items/FileChangeItems.h"
#include "OrmelSDK/JSON/JSONValue.h"

// Requests of the server for an application's approval. A handler of `ThreadOptions` answers. The requests and the
// response have no JSON form.
namespace ormel {

/// The subject of a command approval. Its JSON form is a bare string.
struct CommandApprovalKind : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  /// A command that wants to start.
  static const CommandApprovalKind& command;
  /// Input for a command that runs.
  static const CommandApprovalKind& writeStdin;

  /// Whether it is none of the above; `rawValue` has the server's word.
  bool isUnknown() const { return *this != command && *this != writeStdin; }
};
std::ostream& operator<<(std::ostream& stream, const CommandApprovalKind& value);

inline const CommandApprovalKind& CommandApprovalKind::command = detail::neverDestroyed<CommandApprovalKind>("command");
inline const CommandApprovalKind& CommandApprovalKind::writeStdin =
    detail::neverDestroyed<CommandApprovalKind>("writeStdin");

/// The server wants to run a command, or to write to one.
struct CommandApprovalRequest {
  CommandApprovalKind kind = CommandApprovalKind::command;
  std::optional<std::string> approvalID;
  std::optional<std::string> environmentID;
  std::string threadID;
  std::string turnID;
  std::string itemID;
  /// As one line for a shell.
  std::optional<std::string> command;
  std::optional<std::string> workingDirectory;
  /// Why the approval is needed.
  std::optional<std::string> reason;
  /// The command's actions, in the server's own words.
  std::vector<JSONValue> commandActions;
  RequestPermissionProfile additionalPermissions;
  /// The decisions that the server takes; any, if empty. A decision that is not among them is not sent.
  std::vector<OrmelApprovalDecision> availableDecisions;
  friend bool operator==(const CommandApprovalRequest&, const CommandApprovalRequest&);
  friend std::ostream& operator<<(std::ostream& stream, const CommandApprovalRequest& value);
};

/// The server wants to change files.
struct FileChangeApprovalRequest {
  std::string threadID;
  std::string turnID;
  std::string itemID;
  /// Why the approval is needed.
  std::optional<std::string> reason;
  /// The directory to which access is asked for.
  std::optional<std::string> grantRoot;
  /// The changes as far as they are known.
  std::vector<FileUpdateChange> changes;
  /// The decisions that the server takes; any, if empty. A decision that is not among them is not sent.
  std::vector<OrmelApprovalDecision> availableDecisions;
  friend bool operator==(const FileChangeApprovalRequest&, const FileChangeApprovalRequest&);
  friend std::ostream& operator<<(std::ostream& stream, const FileChangeApprovalRequest& value);
};

/// The server asks for permissions.
struct PermissionsApprovalRequest {
  std::string threadID;
  std::string turnID;
  std::string itemID;
  /// Why they are needed.
  std::optional<std::string> reason;
  RequestPermissionProfile permissions;
  friend bool operator==(const PermissionsApprovalRequest&, const PermissionsApprovalRequest&);
  friend std::ostream& operator<<(std::ostream& stream, const PermissionsApprovalRequest& value);
};

/// The permissions that the application grants: none, unless it fills them in.
struct PermissionsApprovalResponse {
  GrantedPermissionProfile permissions;
  PermissionGrantScope scope = PermissionGrantScope::turn;
  friend bool operator==(const PermissionsApprovalResponse&, const PermissionsApprovalResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const PermissionsApprovalResponse& value);
};

}  // namespace ormel
