#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Handlers/PermissionProfile.h"

namespace ormel {

/// Where a command comes from. Read without regard to case, "_" and "-"; any other word is `unifiedExec`.
enum class GuardianCommandSource { shell, unifiedExec };
std::ostream& operator<<(std::ostream& stream, const GuardianCommandSource& value);

/// Read without regard to case, "_" and "-"; any other word is `socks5Udp`.
enum class NetworkApprovalProtocol { http, https, socks5Tcp, socks5Udp };
std::ostream& operator<<(std::ostream& stream, const NetworkApprovalProtocol& value);

/// To run a command line in a shell.
struct GuardianCommandReviewAction {
  GuardianCommandSource source = GuardianCommandSource::shell;
  std::string command;
  std::string cwd;
  friend bool operator==(const GuardianCommandReviewAction&, const GuardianCommandReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianCommandReviewAction& value);
};

/// To execute a program.
struct GuardianExecveReviewAction {
  GuardianCommandSource source = GuardianCommandSource::shell;
  std::string program;
  std::vector<std::string> argv;
  std::string cwd;
  friend bool operator==(const GuardianExecveReviewAction&, const GuardianExecveReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianExecveReviewAction& value);
};

/// To change files.
struct GuardianApplyPatchReviewAction {
  std::string cwd;
  std::vector<std::string> files;
  friend bool operator==(const GuardianApplyPatchReviewAction&, const GuardianApplyPatchReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianApplyPatchReviewAction& value);
};

/// To reach a host over the network.
struct GuardianNetworkAccessReviewAction {
  std::string target;
  std::string host;
  NetworkApprovalProtocol protocolType = NetworkApprovalProtocol::socks5Udp;
  std::int64_t port = 0;
  friend bool operator==(const GuardianNetworkAccessReviewAction&, const GuardianNetworkAccessReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianNetworkAccessReviewAction& value);
};

/// To call a tool of an MCP server.
struct GuardianMcpToolCallReviewAction {
  std::string server;
  std::string toolName;
  std::optional<std::string> connectorID;
  std::optional<std::string> connectorName;
  std::optional<std::string> toolTitle;
  friend bool operator==(const GuardianMcpToolCallReviewAction&, const GuardianMcpToolCallReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianMcpToolCallReviewAction& value);
};

/// To be granted more permissions.
struct GuardianRequestPermissionsReviewAction {
  std::optional<std::string> reason;
  RequestPermissionProfile permissions;
  friend bool operator==(const GuardianRequestPermissionsReviewAction&, const GuardianRequestPermissionsReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianRequestPermissionsReviewAction& value);
};

/// To write to the standard input of a running process.
struct GuardianWriteStdinReviewAction {
  std::string approvalID;
  std::string processID;
  std::string stdin_;
  std::string cwd;
  friend bool operator==(const GuardianWriteStdinReviewAction&, const GuardianWriteStdinReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianWriteStdinReviewAction& value);
};

/// An action of a type that this library does not know; only its type is kept.
struct GuardianUnknownReviewAction {
  std::string type;
  friend bool operator==(const GuardianUnknownReviewAction&, const GuardianUnknownReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianUnknownReviewAction& value);
};

/// The action under review. Use `visit` to tell the cases apart.
struct GuardianApprovalReviewAction {
  std::variant<GuardianCommandReviewAction, GuardianExecveReviewAction, GuardianApplyPatchReviewAction,
               GuardianNetworkAccessReviewAction, GuardianMcpToolCallReviewAction,
               GuardianRequestPermissionsReviewAction, GuardianWriteStdinReviewAction, GuardianUnknownReviewAction>
      value;

  // Copying and moving a variant is much code; it is compiled once, not in every file that does it.
  GuardianApprovalReviewAction();
  GuardianApprovalReviewAction(const GuardianApprovalReviewAction& other);
  GuardianApprovalReviewAction(GuardianApprovalReviewAction&& other) noexcept;
  GuardianApprovalReviewAction& operator=(const GuardianApprovalReviewAction& other);
  GuardianApprovalReviewAction& operator=(GuardianApprovalReviewAction&& other) noexcept;
  ~GuardianApprovalReviewAction();

  GuardianApprovalReviewAction(GuardianCommandReviewAction action);
  GuardianApprovalReviewAction(GuardianExecveReviewAction action);
  GuardianApprovalReviewAction(GuardianApplyPatchReviewAction action);
  GuardianApprovalReviewAction(GuardianNetworkAccessReviewAction action);
  GuardianApprovalReviewAction(GuardianMcpToolCallReviewAction action);
  GuardianApprovalReviewAction(GuardianRequestPermissionsReviewAction action);
  GuardianApprovalReviewAction(GuardianWriteStdinReviewAction action);
  GuardianApprovalReviewAction(GuardianUnknownReviewAction action);

  friend bool operator==(const GuardianApprovalReviewAction&, const GuardianApprovalReviewAction&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianApprovalReviewAction& value);
};

}  // namespace ormel
