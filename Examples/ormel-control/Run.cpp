#include "Run.h"

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <exception>
#include <memory>
#include <stop_token>
#include <utility>

#include "Ending.h"
#include "ormel-chat/Signals.h"

namespace ormel::control {

namespace {

using Clock = std::chrono::steady_clock;

/// How long a server that is being stopped may keep the user waiting.
constexpr std::chrono::seconds patienceWithServer{2};

/// Ends the session however the action ends, so that no process outlives the program.
Task<Report> actedAndClosed(Action action, Server server) {
  Report report;
  std::exception_ptr failure;
  try {
    auto acting = action(server);
    report = co_await std::move(acting);
  } catch (...) {
    failure = std::current_exception();
  }
  co_await server.session.close();
  if (failure) std::rethrow_exception(failure);
  co_return report;
}

/// Waits for the task, which a signal cancels. Gives its result, or the signal.
class Wait {
 public:
  explicit Wait(Task<Report> task) {
    task.start([ending = ending_](TaskResult<Report> result) { ending->put(std::move(result)); }, stop_.get_token());
  }

  /// The signal that has come, or 0.
  int untilItEnds() {
    for (;;) {
      result_ = ending_->take();
      noteSignals();
      if (result_ || isOverdue()) return signal_;
      struct pollfd watched = {ending_->wakePipe().descriptor(), POLLIN, 0};
      const auto patience = std::chrono::ceil<std::chrono::milliseconds>(patienceWithServer).count();
      ::poll(&watched, 1, signal_ ? static_cast<int>(patience) : -1);
      ending_->wakePipe().drain();
    }
  }

  Report takeReport() { return result_->take(); }

 private:
  void noteSignals() {
    const int interrupts = signals_.takeInterrupts();
    const int signal = interrupts > 0 ? SIGINT : signals_.termination();
    if (signal == 0) return;
    // Again: there is no time left.
    if (signal_ != 0 && interrupts > 0) deadline_ = Clock::now();
    if (signal_ != 0) return;
    signal_ = signal;
    deadline_ = Clock::now() + patienceWithServer;
    stop_.request_stop();
  }

  bool isOverdue() const { return signal_ != 0 && Clock::now() >= deadline_; }

  std::shared_ptr<Ending> ending_ = std::make_shared<Ending>();
  chat::Signals signals_{ending_->wakePipe()};
  std::stop_source stop_;
  std::optional<TaskResult<Report>> result_;
  int signal_ = 0;
  Clock::time_point deadline_;
};

}  // namespace

int runAction(const Action& action, const Server& server, bool json) {
  Report report;
  {
    Wait wait(actedAndClosed(action, server));
    if (const int signal = wait.untilItEnds()) {
      // Not by way of destructors, which would wait for a server that does not stop.
      ::_exit(128 + signal);
    }
    report = wait.takeReport();
  }
  // The server has ended, and signals have their usual effect again: a reader that stops reading holds up nothing.
  print(report, json, Output(STDOUT_FILENO), Output(STDERR_FILENO));
  return report.status;
}

}  // namespace ormel::control
