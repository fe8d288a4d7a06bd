#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Input/AdditionalContext.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/Input/ThreadChoices.h"
#include "OrmelSDK/Input/TurnEnvironment.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/AbortSignal.h"

namespace ormel {

/// The options that an application states for one turn; they take precedence over the options of the thread. An absent
/// option changes nothing.
///
/// *Thread safety*: a plain value, whose copies share the signal.
class TurnOptions {
 public:
  // Compiled once: so many fields are much code to copy.
  TurnOptions();
  TurnOptions(const TurnOptions& other);
  TurnOptions(TurnOptions&& other) noexcept;
  TurnOptions& operator=(const TurnOptions& other);
  TurnOptions& operator=(TurnOptions&& other) noexcept;
  ~TurnOptions();

  /// Absolute path of the directory in which the agent works.
  std::optional<std::string> workingDirectory;

  std::optional<std::vector<std::string>> runtimeWorkspaceRoots;

  /// Passed on to the model service as it is.
  std::optional<std::map<std::string, std::string>> responsesAPIClientMetadata;

  /// The application's own id for the user's message.
  std::optional<std::string> clientUserMessageID;

  /// Pieces of context beside the user's input, by name.
  std::optional<std::map<std::string, AdditionalContextEntry>> additionalContext;

  std::optional<std::vector<TurnEnvironment>> environments;
  std::optional<ApprovalMode> approvalPolicy;
  std::optional<ApprovalsReviewer> approvalsReviewer;

  /// The sandbox policy in the server's own words, in place of the one that the thread's options give.
  std::optional<std::map<std::string, JSONValue>> sandboxPolicy;

  /// The name of a permission profile of the server.
  std::optional<std::string> permissions;

  std::optional<std::string> model;
  std::optional<ModelReasoningEffort> modelReasoningEffort;

  /// The JSON schema of the agent's final answer.
  std::optional<std::map<std::string, JSONValue>> outputSchema;

  /// Ends the turn when it is aborted. Takes an `AbortController` too.
  std::optional<AbortSignal> signal;

  /// Ends the turn when it has lasted so long, counted from the start of the call: it is interrupted, and fails with
  /// `TimeoutError`. The server has a few seconds for its end, as with `Thread::interrupt`; a turn that it still
  /// completes in these succeeds. The thread then takes the next operation, see `Thread::idle`. For `steer` it means
  /// nothing.
  std::optional<std::chrono::nanoseconds> timeout;

  std::optional<ServiceTier> serviceTier;

  /// The summary of this turn's reasoning; without it, the thread's setting stays.
  std::optional<ModelReasoningSummary> modelReasoningSummary;

  /// The personality for this turn; without it, the thread's stays.
  std::optional<Personality> personality;

  std::optional<CollaborationMode> collaborationMode;
};

}  // namespace ormel
