#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Platform/BlockingWork.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"
#include "Support/InMemoryPipe.h"

namespace ormel::testing {

class InMemoryProcess;

/// The behaviour of a server. Members run as pieces of the scheduler; an empty one stands for the ordinary behaviour.
struct InMemoryServerScript {
  InMemoryServerScript() = default;

  std::function<void(InMemoryProcess&)> onStart;
  /// For each line that the client wrote. Without it, the server reads and says nothing.
  std::function<void(InMemoryProcess&, const JSONValue& message)> onMessage;
  /// The end of the client's lines; ordinarily the server exits with status 0.
  std::function<void(InMemoryProcess&)> onInputEnd;
  /// The signal to terminate; ordinarily the server ends by it.
  std::function<void(InMemoryProcess&)> onTerminate;
  /// Called within the call that writes a line, on the client's strand.
  std::function<void(InMemoryProcess&, const std::string& line)> onClientWrite;
  /// The same for a line that finds a broken pipe.
  std::function<void(InMemoryProcess&, const std::string& line)> onLostWrite;
  /// Called within the call that sends a message.
  std::function<void(InMemoryProcess&, const JSONValue& message)> onSend;
};

/// The server's side of one process that was started. Nothing happens within a call: each delivery to the client, and
/// each line that the server reads, is a piece of the scheduler of its own. A dead process does nothing.
class InMemoryProcess final : public std::enable_shared_from_this<InMemoryProcess> {
 public:
  InMemoryProcess(SimulatedScheduler& scheduler, std::shared_ptr<const InMemoryServerScript> script, int identifier,
                  detail::LaunchSettings settings, detail::TerminationHandler onTermination);

  // The server's actions.

  void write(std::string_view bytes);
  void send(const JSONValue& message);
  /// A line that lacks its end, and so must be the last.
  void sendUnended(const JSONValue& message);
  void answer(const JSONValue& request, const JSONValue& result);
  void refuse(const JSONValue& request, std::string_view message);
  void notify(std::string_view method, const JSONValue& params);
  void request(const JSONValue& id, std::string_view method, const JSONValue& params);
  void writeError(std::string_view bytes);
  /// From now on it takes so long until what is written to standard error has been read.
  void slowErrorOutput(std::chrono::nanoseconds delay) { errorOutput_->slowReads(delay); }
  /// From now on the termination handler takes so long until it is under way; by then nobody may hold the process.
  void slowTermination(std::chrono::nanoseconds delay) noexcept { terminationDelay_ = delay; }
  void closeOutput() { output_->closeWriteEnd(); }
  void closeErrorOutput() { errorOutput_->closeWriteEnd(); }
  /// The client's writes find a broken pipe from now on.
  void breakInput() { inputIsBroken_ = true; }
  void exit(int status) { end({detail::TerminationReason::exit, status}); }
  void endBySignal(int number) { end({detail::TerminationReason::uncaughtSignal, number}); }
  /// Ends, and with `pipesStayOpen` somebody else holds the pipes. Output that was written before can still be read.
  void end(detail::Termination termination, bool pipesStayOpen = false);

  /// Does something as a piece of its own, or once time has passed, unless the process has ended by then.
  void later(std::function<void()> work);
  void after(std::chrono::nanoseconds delay, std::function<void()> work);
  /// For what others do with the pipes of a process that has ended.
  void evenAfterEnd(std::chrono::nanoseconds delay, std::function<void()> work);

  // The state that can be seen.

  int identifier() const noexcept { return identifier_; }
  const detail::LaunchSettings& settings() const noexcept { return settings_; }
  bool isRunning() const noexcept { return !termination_; }
  std::optional<detail::Termination> termination() const noexcept { return termination_; }
  /// Whether the client still has its object for the process.
  bool isHeldByClient() const noexcept { return isHeld_; }
  std::size_t terminationSignals() const noexcept { return terminationSignals_; }
  /// Whether the client has neither closed a pipe nor read it to its end.
  bool isRead() const noexcept { return output_->isOpen() || errorOutput_->isOpen(); }
  /// The lines that the client wrote, in the call in which it wrote them, and those that the server has read of them.
  const std::vector<std::string>& linesWritten() const noexcept { return linesWritten_; }
  const std::vector<JSONValue>& messagesRead() const noexcept { return messagesRead_; }
  /// Whether the client will find the end of its output, once it has read what is there.
  bool isOutputClosed() const noexcept { return !output_->isWriteEndOpen(); }
  /// The methods of the messages that the server has read; "" for an answer.
  std::vector<std::string> methodsRead() const;

 private:
  friend class InMemoryServer;
  class Child;

  void start();
  void clientWrites(std::string bytes);
  void clientClosesInput();
  void readInput();
  void readNext();
  void signalTermination();
  void signalKill();
  void noticeEnd();

  SimulatedScheduler& scheduler_;
  const std::shared_ptr<const InMemoryServerScript> script_;
  const int identifier_;
  const detail::LaunchSettings settings_;
  detail::TerminationHandler onTermination_;
  const std::shared_ptr<InMemoryPipe> output_;
  const std::shared_ptr<InMemoryPipe> errorOutput_;

  std::string partialLine_;
  std::vector<std::string> linesWritten_;
  std::vector<JSONValue> messagesRead_;
  std::vector<Timer> timers_;
  std::chrono::nanoseconds terminationDelay_{0};
  std::optional<detail::Termination> termination_;
  std::optional<detail::Termination> noticedTermination_;
  std::size_t terminationSignals_ = 0;
  bool isHeld_ = true;
  bool canBeRead_ = true;
  bool isReading_ = false;
  bool inputIsClosed_ = false;
  bool inputEndIsRead_ = false;
  bool inputIsBroken_ = false;
  bool acceptsInput_ = true;
};

/// Starts processes that exist in this program only, on a simulated scheduler, so that the seed decides how everything
/// interleaves.
///
/// *Object lifetimes*: the scheduler outlives the server, and the server outlives whoever starts processes.
class InMemoryServer final : public detail::ProcessLauncher {
 public:
  explicit InMemoryServer(SimulatedScheduler& scheduler, InMemoryServerScript script = InMemoryServerScript());

  /// Sets the script of the processes that start from now on.
  void setScript(InMemoryServerScript script);

  /// So many of the next launches fail: the program cannot be found.
  void failLaunches(std::size_t count) noexcept { failuresLeft_ = count; }
  /// So many of the next processes start, and memory is too scarce to read their output.
  void failReads(std::size_t count) noexcept { unreadLeft_ = count; }

  std::unique_ptr<detail::ChildProcess> launch(const detail::LaunchSettings& settings,
                                               detail::TerminationHandler onTermination) override;

  std::size_t launchesTried() const noexcept { return launchesTried_; }
  std::size_t started() const noexcept { return processes_.size(); }
  std::size_t running() const;
  /// Processes that the client has not let go of, and pipes that it has not closed.
  std::size_t held() const;
  std::size_t read() const;

  InMemoryProcess& process(std::size_t index) const { return *processes_.at(index); }
  InMemoryProcess& lastProcess() const { return *processes_.back(); }

 private:
  SimulatedScheduler& scheduler_;
  std::shared_ptr<const InMemoryServerScript> script_;
  std::size_t failuresLeft_ = 0;
  std::size_t unreadLeft_ = 0;
  std::size_t launchesTried_ = 0;
  std::vector<std::shared_ptr<InMemoryProcess>> processes_;
};

/// Blocking work that is a piece of the scheduler.
class InMemoryBlockingWork final : public detail::BlockingWork {
 public:
  explicit InMemoryBlockingWork(Scheduler& scheduler) noexcept : scheduler_(scheduler) {}

  void run(detail::UniqueFunction<void()> work) override { scheduler_.post(std::move(work), "blocking work"); }

 private:
  Scheduler& scheduler_;
};

}  // namespace ormel::testing
