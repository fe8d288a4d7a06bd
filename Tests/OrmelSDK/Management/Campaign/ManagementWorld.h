#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

#include "OrmelSDK/Management/ControlSession.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/InMemoryServer.h"

namespace ormel::testing {

/// One schedule of a control session: an application that calls, cancels, subscribes and closes at times that the seed
/// chooses, and a server that does what the seed chooses with each message. After every step, and at the end, it holds
/// against them what a session promises:
///
/// - A process ends only for a reason: it did something wrong, a call on it failed or was cancelled, or the session was
///   closed. The failure of a call on a client that was given up before is no reason.
/// - Each process is shaken hands with once, before it is asked anything.
/// - A call ends once, with its own answer or with something that has happened to it.
/// - A subscriber hears each notification of the session's client in order and without a gap, and none of a client that
///   was given up.
/// - An end leaves nothing behind: no request, no subscription, no wait, no process.
///
/// A promise that is broken throws `Error`.
class ManagementWorld {
 public:
  explicit ManagementWorld(std::uint64_t seed);
  ManagementWorld(const ManagementWorld&) = delete;
  ManagementWorld& operator=(const ManagementWorld&) = delete;
  ~ManagementWorld();

  void play();

  SimulatedScheduler scheduler;

 private:
  using Client = std::weak_ptr<detail::AppServerRPCClient>;

  struct Call {
    std::shared_ptr<Outcome<JSONValue>> outcome;
    std::stop_source stop;
    /// It goes past the session, straight to the client: its failure costs nothing.
    bool isRequest = false;
    bool wasCancelled = false;
    bool wasRefused = false;
    bool hasEnded = false;
    /// The process that its request was written to.
    std::optional<std::size_t> process;
  };
  struct Process {
    /// The session's client that it belongs to; nothing if a client that was given up has started it.
    std::optional<Client> owner;
    bool mayEnd = false;
    bool hasEnded = false;
    std::size_t handshakeLines = 0;
    std::uint64_t notifications = 0;
  };
  struct Subscriber {
    EventChannel<OrmelControlNotification> channel;
    std::map<std::size_t, std::uint64_t> heard;
    /// Processes that were there before the subscription.
    std::size_t processesBefore = 0;
    /// Notifications that came before the first look may have been told in good time.
    bool isWatched = false;
    bool hasEnded = false;
  };

  std::uint64_t choose(std::uint64_t bound) { return scheduler.choose(bound); }
  bool chance(std::uint64_t percent) { return choose(100) < percent; }

  // The application.
  void act();
  void call();
  void request();
  void cancelACall();
  void subscribe();
  void dropASubscriber();
  void close();
  std::size_t callsUnderWay() const;

  // The server.
  InMemoryServerScript script();
  std::size_t indexOf(const InMemoryProcess& process) const;
  void write(InMemoryProcess& process, const std::string& line);
  void serve(InMemoryProcess& process, const JSONValue& message);
  void misbehave(InMemoryProcess& process);
  void answer(InMemoryProcess& process, const JSONValue& request);
  void notify(InMemoryProcess& process);

  // The promises that must hold.
  void look();
  /// For what is seen within a call of the client, which would take an error for its own.
  void note(bool holds, const char* promise);
  void noticeNewProcesses();
  void lookAtProcesses();
  void lookAtSubscribers();
  void lookAtCalls();
  void lookAtRequests();
  void judge(Call& call, std::size_t number);
  void allowEndOfAll();
  /// Whether something is under way that may cost any process: an end of the session, or the end of a call that was
  /// cancelled before it came to its process.
  bool isAnyEndAllowed() const;
  /// A call that fails by one process of a client costs the client, also when that has started the next process by
  /// then.
  bool mayEnd(const Process& process) const;
  /// Whether anything has happened that may fail a call which never came to a process.
  bool hasAnythingHappened() const;
  void lookAtQuietSession();

  InMemoryServer server_;
  InMemoryBlockingWork blockingWork_;
  std::shared_ptr<detail::ControlSession> session_;
  std::uint64_t faultPercent_ = 0;
  bool isHealed_ = false;
  std::size_t launchesFailed_ = 0;
  /// The next process may end too: its client may be that of a call which could not start one.
  bool mayNextEnd_ = false;
  std::string brokenInCall_;
  std::vector<Call> calls_;
  std::vector<std::shared_ptr<Outcome<void>>> closings_;
  std::vector<Process> processes_;
  std::vector<std::unique_ptr<Subscriber>> subscribers_;
  std::vector<Timer> timers_;
  std::shared_ptr<detail::AppServerRPCClient> clientBefore_;
};

}  // namespace ormel::testing
