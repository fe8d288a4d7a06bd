#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "Support/Eventually.h"
#include "Support/ProcessResources.h"

namespace ormel {
namespace {

using testing::asksForApproval;
using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::eventually;
using testing::optionsFor;
using testing::ProcessResources;
using testing::SimulatorScenario;

/// How a handler behaves, and what the server must get to hear.
enum class Behaviour { answers, blocks, throws, answersLate, neverAnswers };
constexpr std::array<std::pair<Behaviour, const char*>, 5> behaviours = {{{Behaviour::answers, "accept"},
                                                                          {Behaviour::blocks, "accept"},
                                                                          {Behaviour::throws, "decline"},
                                                                          {Behaviour::answersLate, "accept"},
                                                                          {Behaviour::neverAnswers, nullptr}}};

/// When the application destroys all that it has.
enum class Moment {
  beforeTheStart,
  onceStarted,
  onceAccepted,
  atTheFirstEvent,
  withinTheHandler,
  afterTheHandler,
  atTheEnd,
};
constexpr std::array moments = {Moment::beforeTheStart,  Moment::onceStarted,      Moment::onceAccepted,
                                Moment::atTheFirstEvent, Moment::withinTheHandler, Moment::afterTheHandler,
                                Moment::atTheEnd};

/// An application with a thread and a turn of it.
class ImpatientApplication : public std::enable_shared_from_this<ImpatientApplication> {
 public:
  ImpatientApplication(Behaviour behaviour, Moment moment) : behaviour_(behaviour), moment_(moment) {}

  void play(const OrmelOptions& options) {
    ThreadOptions threadOptions;
    threadOptions.commandApprovalHandler = [self = shared_from_this()](const CommandApprovalRequest&) {
      return answer(self);
    };
    thread_.emplace(Ormel(options).startThread(std::move(threadOptions)));
    TurnOptions turnOptions;
    turnOptions.signal = controller_.signal;
    auto starting = thread_->runStreamed("go", std::move(turnOptions));
    destroyEverythingAt(Moment::beforeTheStart);
    std::move(starting).start([self = shared_from_this()](TaskResult<StreamedTurn> result) {
      EXPECT_TRUE(result.hasValue());
      if (result.hasValue()) self->keep(result.take());
    });
    destroyEverythingAt(Moment::onceStarted);
    EXPECT_TRUE(eventually([this] { return isAccepted_.load(); }));
    destroyEverythingAt(Moment::onceAccepted);
    read();
    // A handler that never answers is told to stop.
    if (behaviour_ == Behaviour::neverAnswers) {
      EXPECT_TRUE(eventually([this] { return handlersBegun_ == 1; }));
      controller_.abort();
    }
    EXPECT_TRUE(eventually([this] { return handlersEnded_ == 1; }));
    destroyEverything();
  }

  int handlersBegun() const { return handlersBegun_; }

 private:
  static Task<OrmelApprovalDecision> answer(std::shared_ptr<ImpatientApplication> self) {
    ++self->handlersBegun_;
    self->destroyEverythingAt(Moment::withinTheHandler);
    const HandlerEnd end(*self);
    switch (self->behaviour_) {
      case Behaviour::answers:
        break;
      case Behaviour::blocks:
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        break;
      case Behaviour::throws:
        throw std::runtime_error("the database is down");
      case Behaviour::answersLate:
        co_await sleepFor(productionScheduler(), std::chrono::milliseconds(5));
        break;
      case Behaviour::neverAnswers: {
        const OneShot<void> never("never");
        co_await never.wait();
      }
    }
    co_return OrmelApprovalDecision::accept;
  }

  class HandlerEnd {
   public:
    explicit HandlerEnd(ImpatientApplication& application) : application_(application) {}
    HandlerEnd(const HandlerEnd&) = delete;
    HandlerEnd& operator=(const HandlerEnd&) = delete;
    ~HandlerEnd() {
      application_.destroyEverythingAt(Moment::afterTheHandler);
      ++application_.handlersEnded_;
    }

   private:
    ImpatientApplication& application_;
  };

  void keep(StreamedTurn turn) {
    {
      const std::lock_guard lock(mutex_);
      if (!isDestroyed_) turn_.emplace(std::move(turn));
    }
    isAccepted_ = true;
  }

  /// Reads up to the first event, or to the end where nothing ends it before. The events are the reader's meanwhile.
  void read() {
    std::optional<StreamedTurn> turn;
    {
      const std::lock_guard lock(mutex_);
      turn.swap(turn_);
    }
    if (!turn) return;
    turn->events.nextBlocking();
    destroyEverythingAt(Moment::atTheFirstEvent);
    if (moment_ == Moment::atTheFirstEvent || behaviour_ == Behaviour::neverAnswers) return;
    while (turn->events.nextBlocking()) {
    }
    destroyEverythingAt(Moment::atTheEnd);
  }

  void destroyEverythingAt(Moment moment) {
    if (moment == moment_) destroyEverything();
  }
  void destroyEverything() {
    std::optional<Thread> thread;
    std::optional<StreamedTurn> turn;
    const std::lock_guard lock(mutex_);
    isDestroyed_ = true;
    thread.swap(thread_);
    turn.swap(turn_);
  }

  const Behaviour behaviour_;
  const Moment moment_;
  AbortController controller_;
  std::mutex mutex_;
  bool isDestroyed_ = false;
  std::optional<Thread> thread_;
  std::optional<StreamedTurn> turn_;
  std::atomic<bool> isAccepted_{false};
  std::atomic<int> handlersBegun_{0};
  std::atomic<int> handlersEnded_{0};
};

/// The server's side: it must get the answer, or must be told to stop.
std::string scenarioFor(const char* answer) {
  const std::string asking = embeddedTurn + asksForApproval;
  if (answer) return asking + " expecting {\"decision\": \"" + answer + "\"}\n" + embeddedTurnEnds;
  return asking + "\nclient asks turn/interrupt\nserver answers {}\n" + embeddedTurnEnds;
}

TEST(Destruction, OfEverythingAtAnyMomentLeavesTheTurnToItsEndAndThenNothing) {
  {
    const SimulatorScenario warmingUp(scenarioFor("accept"));
    std::make_shared<ImpatientApplication>(Behaviour::answers, Moment::atTheEnd)->play(optionsFor(warmingUp));
  }
  EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
  const auto before = ProcessResources::now();
  for (const auto& [behaviour, answer] : behaviours) {
    for (const Moment moment : moments) {
      SCOPED_TRACE(std::to_string(static_cast<int>(behaviour)) + " at " + std::to_string(static_cast<int>(moment)));
      const SimulatorScenario scenario(scenarioFor(answer));
      auto application = std::make_shared<ImpatientApplication>(behaviour, moment);
      const std::weak_ptr<ImpatientApplication> held = application;
      application->play(optionsFor(scenario));
      EXPECT_EQ(application->handlersBegun(), 1);
      application.reset();
      // The handler holds the application, so this shows that the handler is gone too.
      EXPECT_TRUE(eventually([&] { return held.expired(); }));
      EXPECT_TRUE(eventually([&] { return !ProcessResources::now().hasChildren; }));
      EXPECT_EQ(scenario.failures(), std::vector<std::string>());
    }
  }
  EXPECT_TRUE(eventually([&] { return ProcessResources::now().isNoMoreThan(before); }));
}

}  // namespace
}  // namespace ormel
