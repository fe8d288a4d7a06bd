#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Management/CallPerformer.h"
#include "OrmelSDK/Management/ThreadParams.h"
#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Options/ThreadOptions.h"
#include "OrmelSDK/OrmelControlSession.h"
#include "OrmelSDK/Records/ManagementReplies.h"
#include "OrmelSDK/Thread.h"

namespace ormel {

namespace detail {
class OneShotPerformer;
}

/// The front door of the library: it finds the server executable once and makes what an application works with.
///
///     Ormel ormel;
///     Thread thread = ormel.startThread();
///     ThreadListResponse page = ormel.listThreads().get();       // or co_await; include Records/ThreadRecords.h
///
/// Its calls manage what the server keeps. Each starts a server process of its own, sends one request and stops the
/// process before it ends; who makes many, or wants to hear the server's notifications, uses a control session.
///
/// *Thread safety*: immutable; may be used from any threads. Calls at the same time do not see each other.
///
/// *Object lifetimes*: what it makes, and calls under way, do not need it any more. Copies are independent.
///
/// *Errors*: construction does not fail. That there is no executable shows when a process is to be started. A call
/// fails with `OrmelProcessError` if the server cannot be started, with `AppServerRPCError` if the server refuses it,
/// and with `ThreadRunError` of the kind `streamError` if the connection breaks or the reply is not what it should be.
/// Arguments are not examined on this side.
///
/// *Cancellation*: a call whose stop token is triggered fails with `ThreadRunError` of the kind `streamError`:
/// "App-server RPC thread/list was cancelled". Its server process is stopped; there is no time-out.
class Ormel {
 public:
  /// Looks for the executable; `OrmelOptions` says where.
  explicit Ormel(OrmelOptions options = OrmelOptions());
  // Copied, never moved from: every instance can be used.
  Ormel(const Ormel&) = default;
  Ormel& operator=(const Ormel&) = default;

  /// The server executable that is used, or the bare name "ormel" if none was found.
  const std::string& executablePath() const noexcept;

  /// Directories that are put ahead of the server's `PATH`.
  const std::vector<std::string>& ormelPathDirectories() const noexcept;

  /// Those given, with `selectedOrmelPathOverride` telling what the search came to.
  const OrmelOptions& options() const noexcept;

  /// The executable that a path leads to, which may be that of a script: the one that the constructor would use.
  static std::string normalizedCLIPath(const std::string& path);

  /// A new conversation. Nothing is sent before its first turn.
  Thread startThread(ThreadOptions options = ThreadOptions()) const;

  /// A conversation that the server knows. Nothing is sent before its first operation.
  Thread resumeThread(std::string id, ThreadOptions options = ThreadOptions()) const;

  /// A session that keeps its server process between calls. Nothing is started before its first call.
  OrmelControlSession makeControlSession() const;

  /// Any call, for what this library has no operation for. The result is read as the record, which is one that has a
  /// JSON form, or `JSONValue`.
  template <typename Record>
  Task<Record> performRPC(
      std::string method, std::optional<JSONValue> params = std::nullopt,
      AppServerInitializeCapabilities initializeCapabilities = AppServerInitializeCapabilities::forManagement()) const {
    return detail::performFor<Record>(performer(std::move(initializeCapabilities)), std::move(method),
                                      std::move(params));
  }

  /// Sends a notification to a server process of its own, which gets half a second to act on it and exit. Unlike those
  /// of a call its errors, `CancelledError` among them, come as they are.
  Task<void> performNotification(std::string method, std::optional<JSONValue> params = std::nullopt) const;

  // Threads that the server keeps.

  /// A page of the stored threads.
  Task<ThreadListResponse> listThreads(const ListThreadsParams& params = ListThreadsParams()) const;

  /// A page of the threads that the server has in memory.
  Task<ThreadListResponse> listLoadedThreads(const ListLoadedThreadsParams& params = ListLoadedThreadsParams()) const;

  Task<ThreadReadResponse> readThread(const std::string& threadID,
                                      const ReadThreadParams& params = ReadThreadParams()) const;

  /// Makes a thread that goes on where another one is.
  Task<ThreadForkResponse> forkThread(const std::string& threadID,
                                      const ForkThreadParams& params = ForkThreadParams()) const;

  Task<void> archiveThread(const std::string& threadID) const;
  Task<void> deleteThread(const std::string& threadID) const;
  Task<ThreadReadResponse> unarchiveThread(const std::string& threadID) const;

  /// Has the server drop the thread from memory when nobody else uses it.
  Task<ThreadUnsubscribeResponse> unsubscribeThread(const std::string& threadID) const;

  Task<void> setThreadName(const std::string& threadID, const std::string& name) const;

  /// Has the server shorten the thread's history.
  Task<void> startThreadCompaction(const std::string& threadID) const;

  /// Runs a command of the user's in the thread.
  Task<void> runThreadShellCommand(const std::string& threadID, const std::string& command) const;

  /// Lets the agent do what its guardian has denied. `event` is the denial as the server reported it.
  Task<void> approveGuardianDeniedAction(const std::string& threadID, const JSONValue& event) const;

  Task<ThreadReadResponse> updateThreadMetadata(
      const std::string& threadID, const UpdateThreadMetadataParams& params = UpdateThreadMetadataParams()) const;

  /// Changes the settings that the thread's next turn runs under.
  Task<ThreadSettingsUpdateResponse> updateThreadSettings(
      const std::string& threadID, const UpdateThreadSettingsParams& params = UpdateThreadSettingsParams()) const;

  /// Adds items, in the form of the model's interface, to the thread's history.
  Task<void> injectThreadItems(const std::string& threadID, const std::vector<JSONValue>& items) const;

  /// A page of the thread's turns.
  Task<ThreadTurnsListResponse> listThreadTurns(const std::string& threadID,
                                                const ListThreadTurnsParams& params = ListThreadTurnsParams()) const;

  /// A page of a turn's items. A server that does not know the call is asked again by its older name, which costs a
  /// second process.
  Task<ThreadTurnItemsListResponse> listThreadTurnItems(
      const std::string& threadID, const std::string& turnID,
      const ListThreadTurnItemsParams& params = ListThreadTurnItemsParams()) const;

  Task<ThreadGoalSetResponse> setThreadGoal(const std::string& threadID,
                                            const SetThreadGoalParams& params = SetThreadGoalParams()) const;
  Task<ThreadGoalGetResponse> readThreadGoal(const std::string& threadID) const;
  Task<ThreadGoalClearResponse> clearThreadGoal(const std::string& threadID) const;

  /// Starts a review. It runs in the server process of this call and ends with it; `Thread::startReviewStreamed` makes
  /// one whose events can be followed.
  Task<ReviewStartResponse> startReview(const std::string& threadID, const ReviewTarget& target,
                                        const StartReviewParams& params = StartReviewParams()) const;

  Task<ConversationSummaryResponse> getConversationSummary(
      const GetConversationSummaryParams& params = GetConversationSummaryParams()) const;

 private:
  Thread thread(std::optional<std::string> id, ThreadOptions options) const;
  std::shared_ptr<detail::CallPerformer> performer() const;
  std::shared_ptr<detail::CallPerformer> performer(AppServerInitializeCapabilities initializeCapabilities) const;

  std::shared_ptr<detail::OneShotPerformer> performer_;
};

}  // namespace ormel
