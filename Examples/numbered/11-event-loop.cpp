// Holds a conversation on the main thread, in an event loop of the program's own: epoll waits for the library and for
// Ctrl-C, which ends the turn and then the program.
// Usage: 11-event-loop [SERVER] [QUESTION]

#include <OrmelSDK/Concurrency/ConcurrencyErrors.h>
#include <OrmelSDK/Events/TextNews.h>
#include <OrmelSDK/LoopScheduler.h>
#include <OrmelSDK/Ormel.h>

#include <signal.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>

namespace {

/// Ctrl-C as something to read. The signal is blocked, so it does nothing else.
int interruptDescriptor() {
  sigset_t interrupt;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  sigprocmask(SIG_BLOCK, &interrupt, nullptr);
  return signalfd(-1, &interrupt, SFD_CLOEXEC | SFD_NONBLOCK);
}

/// Everything after a `co_await` runs on the main thread again, so nothing here needs a lock.
ormel::Task<void> talk(ormel::Thread thread, std::string question, ormel::AbortSignal signal) {
  ormel::TurnOptions turnOptions;
  turnOptions.signal = signal;
  ormel::StreamedTurn turn = co_await thread.runStreamed(std::move(question), turnOptions);
  ormel::TextNews news;
  while (auto event = co_await turn.events.next()) {
    const ormel::NewText added = news.ofMessage(*event);
    std::cout << added.text << (added.isComplete ? "\n" : "") << std::flush;
  }
  co_await thread.close();
}

/// Milliseconds, rounded up, for a wait that ends when the scheduler's next timer is due, or after a day.
int waitingTime(const ormel::LoopScheduler& loop) {
  constexpr std::chrono::nanoseconds day = std::chrono::hours(24);
  const auto time = std::min(loop.timeToNextTimer().value_or(day), day);
  return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(time).count());
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  const int interrupt = interruptDescriptor();
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];
  const std::string question = argumentCount > 2 ? arguments[2] : "Tell me about loops";

  ormel::LoopScheduler loop;
  const ormel::AbortController controller;
  ormel::TaskResult<void> outcome;
  bool isDone = false;
  auto conversation = talk(ormel::Ormel(options).startThread(), question, controller.signal);
  std::move(conversation).onScheduler(loop).start([&](ormel::TaskResult<void> result) {
    outcome = std::move(result);
    isDone = true;
  });

  const int poller = epoll_create1(EPOLL_CLOEXEC);
  for (const int watched : {loop.descriptor(), interrupt}) {
    epoll_event wanted{};
    wanted.events = EPOLLIN;
    wanted.data.fd = watched;
    epoll_ctl(poller, EPOLL_CTL_ADD, watched, &wanted);
  }
  while (!isDone) {
    epoll_event event{};
    const int count = epoll_wait(poller, &event, 1, waitingTime(loop));
    if (count < 0 && errno != EINTR) throw ormel::ResourceExhaustedError("descriptors", std::strerror(errno));
    signalfd_siginfo ignored{};
    const bool isInterrupted = count == 1 && event.data.fd == interrupt;
    if (isInterrupted && read(interrupt, &ignored, sizeof ignored) > 0) controller.abort();
    loop.runReady();
  }
  close(poller);
  close(interrupt);
  outcome.take();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return error.isAborted() ? 0 : 1;
}
