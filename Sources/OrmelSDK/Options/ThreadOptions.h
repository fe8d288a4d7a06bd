#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Handlers/ApprovalDecision.h"
#include "OrmelSDK/Handlers/ApprovalRequests.h"
#include "OrmelSDK/Handlers/AsyncHandler.h"
#include "OrmelSDK/Handlers/DynamicTool.h"
#include "OrmelSDK/Handlers/Elicitation.h"
#include "OrmelSDK/Handlers/ParlaneAuthTokens.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/Input/ThreadChoices.h"
#include "OrmelSDK/Input/TurnEnvironment.h"
#include "OrmelSDK/Options/OrmelConfigValue.h"

namespace ormel {

/// The options that an application states once for a thread. An absent option is left to the server.
///
///     ThreadOptions options;
///     options.model = "large";
///     options.sandboxMode = SandboxMode::workspaceWrite;
///     options.commandApprovalHandler = [](const CommandApprovalRequest&) { return OrmelApprovalDecision::decline; };
///
/// *Thread safety*: a plain value. The handlers are called on threads of the library, and may be called from several
/// at the same time; see `AsyncHandler`.
///
/// *Errors*: a handler that fails, or is absent, is answered for by the most restrictive answer that the server takes.
class ThreadOptions {
 public:
  // Compiled once: so many fields are much code to copy.
  ThreadOptions();
  ThreadOptions(const ThreadOptions& other);
  ThreadOptions(ThreadOptions&& other) noexcept;
  ThreadOptions& operator=(const ThreadOptions& other);
  ThreadOptions& operator=(ThreadOptions&& other) noexcept;
  ~ThreadOptions();

  std::optional<std::string> model;
  std::optional<std::string> modelProvider;

  /// The files that commands may touch without further permissions.
  std::optional<SandboxMode> sandboxMode;

  /// Absolute path of the directory in which the agent works.
  std::optional<std::string> workingDirectory;

  /// Kept for the application; no request carries it.
  std::optional<bool> skipGitRepoCheck;

  std::optional<ModelReasoningEffort> modelReasoningEffort;
  std::optional<ModelReasoningSummary> modelReasoningSummary;
  std::optional<ModelVerbosity> modelVerbosity;

  /// Size of the model's context window, in tokens.
  std::optional<std::int64_t> modelContextWindow;

  /// The number of tokens at which the history is compacted.
  std::optional<std::int64_t> modelAutoCompactTokenLimit;

  std::optional<ServiceTier> serviceTier;
  std::optional<Personality> personality;

  /// Instructions in place of the server's own.
  std::optional<std::string> baseInstructions;

  /// Instructions beside the server's own.
  std::optional<std::string> developerInstructions;

  /// The name under which the application's use of the service is counted.
  std::optional<std::string> serviceName;

  /// Whether the server forgets the thread at its end.
  std::optional<bool> ephemeral;

  std::optional<ThreadStartSource> sessionStartSource;
  std::optional<ThreadSource> threadSource;

  /// Directories with further skills. The server is told them ahead of every operation, also when its process has
  /// served one before. Texts of white space are left out; if no other is left, nothing is sent.
  std::optional<std::vector<std::string>> skillExtraRoots;

  std::optional<std::vector<std::string>> runtimeWorkspaceRoots;
  std::optional<std::vector<TurnEnvironment>> environments;

  /// Kept for the application; no request carries it.
  std::optional<bool> persistExtendedHistory;

  /// Whether sandboxed commands may use the network.
  std::optional<bool> networkAccessEnabled;

  std::optional<WebSearchMode> webSearchMode;

  /// True stands for live search. Counts only when `webSearchMode` is absent.
  std::optional<bool> webSearchEnabled;

  std::optional<ApprovalMode> approvalPolicy;
  std::optional<ApprovalsReviewer> approvalsReviewer;

  /// The name of a permission profile of the server.
  std::optional<std::string> permissions;

  /// Directories that sandboxed commands may write to, beside the working directory.
  std::optional<std::vector<std::string>> additionalDirectories;

  std::optional<CollaborationMode> collaborationMode;

  /// Tools that the application carries out.
  std::optional<std::vector<DynamicTool>> dynamicTools;

  std::optional<AsyncHandler<OrmelApprovalDecision(CommandApprovalRequest)>> commandApprovalHandler;
  std::optional<AsyncHandler<OrmelApprovalDecision(FileChangeApprovalRequest)>> fileChangeApprovalHandler;
  std::optional<AsyncHandler<PermissionsApprovalResponse(PermissionsApprovalRequest)>> permissionsApprovalHandler;

  /// Whether the elicitation handler takes forms in Velnor's dialect.
  bool supportsVelnorFormElicitation = false;

  std::optional<AsyncHandler<McpServerElicitationResponse(McpServerElicitationRequest)>> mcpServerElicitationHandler;

  /// Tokens cannot be refused: when this handler is absent or fails, so does the turn.
  std::optional<AsyncHandler<ParlaneAuthTokensRefreshResponse(ParlaneAuthTokensRefreshRequest)>>
      parlaneAuthTokensRefreshHandler;

  /// Gives an attestation token.
  std::optional<AsyncHandler<std::string()>> attestationGenerateHandler;

  /// Called with the thread's id once it is known. It must not fail.
  std::optional<AsyncHandler<void(std::string)>> threadStartedHandler;

  /// Overrides of the server's configuration for this thread, ahead of `OrmelOptions::config`.
  std::optional<std::map<std::string, OrmelConfigValue>> configOverrides;
};

}  // namespace ormel
