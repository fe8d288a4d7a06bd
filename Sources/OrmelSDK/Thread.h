#pragma once

#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/Events/TurnEvents.h"
#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/Input/UserInput.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/Options/AbortSignal.h"
#include "OrmelSDK/Options/TurnOptions.h"

namespace ormel {

namespace detail {
class Conversation;
}

/// A whole turn.
struct Turn {
  /// The items that were completed, in order.
  std::vector<ThreadItem> items;
  /// The text of the last completed message of the agent; empty if there was none.
  std::string finalResponse;
  /// The tokens used; absent if the turn ended without saying so.
  std::optional<Usage> usage;
  friend bool operator==(const Turn&, const Turn&);
  /// Writes it as JSON, for logs and test failures; a turn has no form on the wire.
  friend std::ostream& operator<<(std::ostream& stream, const Turn& value);
};

/// An operation that the server has accepted, and its events as they come.
///
///     while (auto event = co_await streamed.events.next()) { ... }   // in a coroutine
///     for (const ThreadEvent& event : streamed.events) { ... }       // blocking
///
/// The events end plainly, also when the turn itself failed, which an event tells; or they fail, with `ThreadRunError`
/// or, when the application stopped the operation, with `OrmelProcessError` of the kind `aborted`. A consumer that
/// stops reading does not stop the operation.
struct StreamedTurn {
  explicit StreamedTurn(EventChannel<ThreadEvent> eventsOfTurn) : events(std::move(eventsOfTurn)) {}

  EventChannel<ThreadEvent> events;
};

/// An application's handle on one conversation with the server. `Ormel` makes it. It starts a server process at the
/// first operation and keeps it for the next ones; operations go one at a time.
///
///     Thread thread = ormel.startThread();
///     Turn turn = thread.run("What is in this folder?").get();       // or co_await
///     std::cout << turn.finalResponse << '\n';
///
/// *Thread safety*: all members may be called from any threads. When two operations are started at the same time, one
/// fails.
///
/// *Object lifetimes*: copies are the same conversation. When the last copy is gone and no operation is under way, the
/// server process is ended in the background; an operation under way keeps the conversation until its events have
/// ended. The handlers of its `ThreadOptions` belong to the conversation: one that holds a copy of the thread keeps the
/// conversation and the server process for ever. A thread that was default-constructed or moved from stands for no
/// conversation until one is assigned to it: each call throws an `Error` that says so.
///
/// *Errors*: `ThreadRunError` of the kind `streamError` when the server, the connection to it or the use of the thread
/// is at fault: "An app-server operation is already active" during another operation. `OrmelProcessError` when the
/// server cannot be started, or, of the kind `aborted`, when the application stopped the operation; one that is stopped
/// while it starts may also fail with "Prepared app-server operation is no longer current". An operation that fails
/// ends the server process; the next one starts another.
///
/// *Fatal*: a server that sends an id, of a request or of a response, which is a whole number outside the signed 64-bit
/// range ends this process, as `JSONValue::intValue` does. An id that has lost its last digits must never match
/// another.
///
/// *Cancellation*: an operation whose call is cancelled by its stop token before the server has accepted it is aborted,
/// and the call fails with `CancelledError`. Afterwards a cancelled `run` only stops reading, and `interrupt` or the
/// `AbortSignal` of its options ends the operation.
class Thread {
 public:
  /// No conversation.
  Thread() noexcept = default;
  explicit Thread(std::shared_ptr<detail::Conversation> conversation) : conversation_(std::move(conversation)) {}

  /// The server's id of the conversation; absent until the first turn has begun.
  std::optional<std::string> id() const;

  /// Runs a turn to its end. Fails with `ThreadRunError` of the kind `turnFailed` if the server says that the turn
  /// failed.
  Task<Turn> run(Input input, TurnOptions turnOptions = TurnOptions()) const;

  /// Starts a turn; ends when the server has accepted it.
  Task<StreamedTurn> runStreamed(Input input, TurnOptions turnOptions = TurnOptions()) const;

  /// Starts a review, for which the conversation must have begun. A detached one is refused: it needs a thread of its
  /// own.
  Task<StreamedTurn> startReviewStreamed(ReviewTarget target, ReviewDelivery delivery = ReviewDelivery::inline_,
                                         std::optional<AbortSignal> signal = std::nullopt) const;

  /// Has the server shorten the conversation's history, which must have begun.
  Task<StreamedTurn> compactStreamed(std::optional<AbortSignal> signal = std::nullopt) const;

  /// Runs a turn on a copy of the conversation that is forgotten afterwards, with instructions of its own. The
  /// conversation must have begun, and does not change.
  Task<StreamedTurn> runSideConversationStreamed(Input input, std::string developerInstructions,
                                                 TurnOptions turnOptions = TurnOptions()) const;

  /// Adds input to the turn that is running; fails with "No active turn to steer" if there is none.
  Task<void> steer(Input input, TurnOptions turnOptions = TurnOptions()) const;

  /// Answers questions that the server has asked by an item of the tool "request_user_input": for the id of each
  /// question its answers. An item is answered once.
  Task<void> submitRequestUserInput(std::string itemID, std::map<std::string, std::vector<std::string>> answers) const;

  /// Ends the operation that is running, as aborted; does nothing without one. Ends when the server has taken note; the
  /// events end then or at most three seconds later.
  Task<void> interrupt() const;

  /// Ends when the operation that is running has ended, at once without one: the thread then takes the next operation.
  ///
  ///     co_await thread.interrupt();
  ///     co_await thread.idle();
  ///     co_await thread.run("Something else");
  Task<void> idle() const;

  /// Ends the conversation's use of this process: an operation that is running fails as aborted, and the server process
  /// is ended. Completes when that process is gone; if it takes longer than three seconds to end, it is killed. The id
  /// stays, every later operation fails with "The thread has been closed", and the conversation can be resumed by
  /// `Ormel::resumeThread`. A second call awaits the same end. Without it the same is done in the background when the
  /// last copy of the thread goes.
  ///
  /// A process that an earlier operation has cost, by its failure, was told to end then and is not waited for.
  ///
  /// *Cancellation*: ends the wait only.
  Task<void> close() const;

 private:
  const std::shared_ptr<detail::Conversation>& conversation() const;

  std::shared_ptr<detail::Conversation> conversation_;
};

}  // namespace ormel
