#pragma once

#include <memory>
#include <string>
#include <utility>

#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Management/OrmelControlNotification.h"
#include "OrmelSDK/Management/ThreadParams.h"
#include "OrmelSDK/Records/ManagementReplies.h"

namespace ormel {

namespace detail {
class ControlSession;
}

/// Calls on a server process that is kept between them, and the server's notifications. `Ormel` makes it.
///
///     OrmelControlSession session = ormel.makeControlSession();
///     auto notifications = session.notifications().get();        // or co_await
///     session.archiveThread("t1").get();
///     while (auto notification = notifications.nextBlocking()) { ... }
///     session.close().get();
///
/// The first call starts the process; any number of calls can be under way on it at the same time. A process that has
/// ended is replaced by the next call.
///
/// *Thread safety*: all members may be called from any threads.
///
/// *Object lifetimes*: copies are the same session. `close` is how to end it; a session whose last copy goes ends its
/// server process all the same, once no call is under way. A session that was moved from may only be destroyed or
/// assigned to.
///
/// *Errors*: as those of `Ormel`'s calls, but nothing is added to their texts, and a cancelled call fails with
/// `CancelledError`. Every call that fails costs the server process, also one that the server refuses: the other calls
/// that are under way fail with "App-server RPC client terminated", and the next call starts a new process.
///
/// *Cancellation*: a call whose stop token is triggered fails, as above. There is no time-out.
class OrmelControlSession {
 public:
  explicit OrmelControlSession(std::shared_ptr<detail::ControlSession> session) : session_(std::move(session)) {}

  /// Subscribes to all that the server tells from now on, whatever becomes of its process. A subscriber that lags keeps
  /// the newest 32 notifications and loses the older ones without notice. Destroying or cancelling the channel ends the
  /// subscription; `close` ends the channel. It starts no process, so nothing comes before there was a call. Does not
  /// fail.
  Task<EventChannel<OrmelControlNotification>> notifications() const;

  /// Ends the server process, the calls that are under way, which fail, and all subscriptions. The session can be used
  /// again. Does not fail, and is not cancelled.
  Task<void> close() const;

  // Threads that the server keeps; see `Ormel`.

  Task<ThreadForkResponse> forkThread(const std::string& threadID,
                                      const ForkThreadInSessionParams& params = ForkThreadInSessionParams()) const;
  Task<void> archiveThread(const std::string& threadID) const;
  Task<void> deleteThread(const std::string& threadID) const;
  Task<ThreadReadResponse> unarchiveThread(const std::string& threadID) const;
  Task<void> setThreadName(const std::string& threadID, const std::string& name) const;
  Task<void> compactThread(const std::string& threadID) const;

 private:
  std::shared_ptr<detail::ControlSession> session_;
};

}  // namespace ormel
