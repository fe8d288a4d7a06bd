#include "Watch.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <exception>
#include <memory>
#include <utility>

#include "NotificationQueue.h"
#include "OrmelSDK/Records/AccountRecords.h"
#include "TerminalText.h"
#include "Values.h"
#include "ormel-chat/Signals.h"

namespace ormel::control {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t columnsOfValue = 60;
/// A server that has ended is noticed by the next call, which starts another.
constexpr std::chrono::seconds betweenCalls{10};

std::string shortValue(const JSONValue& value) {
  const auto text = value.stringValue();
  const bool isWord = text && !text->empty() && text->find_first_of(" \"=\\") == text->npos;
  return cutTo(columnsOfValue, onOneLine(isWord ? std::string(*text) : value.encode()));
}

Task<void> relay(EventChannel<OrmelControlNotification> notifications, std::shared_ptr<NotificationQueue> queue) {
  while (auto notification = co_await notifications.next()) queue->put(*std::move(notification));
  queue->end();
}

/// Asks for something that changes nothing, so that there is a server.
Task<void> call(OrmelControlSession session, std::shared_ptr<NotificationQueue> queue,
                std::shared_ptr<std::atomic<bool>> isUnderWay) {
  try {
    [[maybe_unused]] const AccountReadResponse account = co_await session.readAccount();
  } catch (...) {
    queue->fail(std::current_exception());
  }
  isUnderWay->store(false);
}

class Watch {
 public:
  Watch(OrmelControlSession session, bool json) : session_(std::move(session)), json_(json) {
    relay(session_.notifications().get(), queue_).detach();
  }

  ~Watch() { closeOnce(); }

  int run() {
    try {
      for (;;) {
        if (const int signal = signalThatCame()) return 128 + signal;
        const auto failure = queue_->failure();
        if (failure) closeOnce();
        if (!failure) keepServer();
        const bool isLast = queue_->hasEnded();
        fill();
        // Notifications that came before the failure are printed first.
        if (failure && isLast && pending_.empty()) std::rethrow_exception(failure);
        if (!waitForNews()) return 0;
        if (isWritable_) pending_.erase(0, output_.writeSome(pending_));
      }
    } catch (const OutputClosed&) {
      return 0;
    }
  }

 private:
  int signalThatCame() const { return signals_.takeInterrupts() > 0 ? SIGINT : signals_.termination(); }

  void keepServer() {
    if (Clock::now() < nextCall_) return;
    nextCall_ = Clock::now() + betweenCalls;
    if (!isCallUnderWay_->exchange(true)) call(session_, queue_, isCallUnderWay_).detach();
  }

  void closeOnce() {
    if (!std::exchange(isClosed_, true)) session_.close().get();
  }

  /// Takes the next line when the one before has been written.
  void fill() {
    if (!pending_.empty()) return;
    if (const std::size_t lost = queue_->takeLost()) {
      errors_.write("ormel-control: " + std::to_string(lost) + " notifications were lost.\n");
    }
    const auto notification = queue_->take();
    if (!notification) return;
    std::string line = json_ ? jsonLine(*notification) : shortLine(*notification);
    if (output_.isTerminal() && !json_) line = cutTo(output_.columns(), line);
    pending_ = line + "\n";
  }

  /// Whether anybody is there to read.
  bool waitForNews() {
    const auto untilCall = std::chrono::ceil<std::chrono::milliseconds>(nextCall_ - Clock::now());
    const short wanted = pending_.empty() ? 0 : POLLOUT;
    std::array<struct pollfd, 2> watched = {
        {{queue_->wakePipe().descriptor(), POLLIN, 0}, {output_.descriptor(), wanted, 0}}};
    ::poll(watched.data(), watched.size(), static_cast<int>(std::max<std::int64_t>(untilCall.count(), 0)));
    queue_->wakePipe().drain();
    isWritable_ = (watched[1].revents & POLLOUT) != 0;
    return (watched[1].revents & (POLLERR | POLLHUP | POLLNVAL)) == 0;
  }

  OrmelControlSession session_;
  bool json_;
  std::shared_ptr<NotificationQueue> queue_ = std::make_shared<NotificationQueue>();
  std::shared_ptr<std::atomic<bool>> isCallUnderWay_ = std::make_shared<std::atomic<bool>>(false);
  bool isClosed_ = false;
  chat::Signals signals_{queue_->wakePipe()};
  Output output_{STDOUT_FILENO};
  Output errors_{STDERR_FILENO};
  std::string pending_;
  bool isWritable_ = false;
  Clock::time_point nextCall_;
};

}  // namespace

std::string shortLine(const OrmelControlNotification& notification) {
  std::string line = onOneLine(notification.method);
  if (!notification.params) return line;
  const JSONObject* params = notification.params->objectValue();
  if (!params) return line + "  " + shortValue(*notification.params);
  for (const JSONMember& member : sortedMembers(*params)) {
    line += "  " + onOneLine(member.key) + "=" + shortValue(member.value);
  }
  return line;
}

std::string jsonLine(const OrmelControlNotification& notification) {
  JSONObjectBuilder line;
  line.set("method", notification.method).set("params", notification.params);
  return harmlessJSON(line.build().encode());
}

int watchNotifications(const Server& server, bool json) { return Watch(server.session, json).run(); }

}  // namespace ormel::control
