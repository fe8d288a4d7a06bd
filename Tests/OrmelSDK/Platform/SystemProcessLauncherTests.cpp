#include "OrmelSDK/Platform/SystemProcessLauncher.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <mutex>
#include <thread>

#include "OrmelSDK/Platform/IORuntime.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "Support/Eventually.h"
#include "Support/Fifo.h"
#include "Support/ForeignReaping.h"
#include "Support/ProcessResources.h"
#include "Support/RecordedChild.h"

namespace ormel::detail {

namespace {

using testing::eventually;
using testing::Fifo;
using testing::helper;
using testing::ProcessResources;
using testing::RecordedChild;
using testing::shell;

constexpr Termination exited(int status) { return {TerminationReason::exit, status}; }
constexpr Termination killedBy(int number) { return {TerminationReason::uncaughtSignal, number}; }

/// Every way of noticing a child's end keeps the same promises.
class SystemProcessLauncherTest : public ::testing::TestWithParam<EndNotice> {
 protected:
  /// Matches the end of a child that somebody else may have reaped.
  static ::testing::Matcher<std::optional<Termination>> endsAs(const Termination& termination) {
    if (GetParam() == EndNotice::automatic && testing::endsAreTold()) return ::testing::Eq(termination);
    return ::testing::AnyOf(termination, Termination());
  }

  SystemProcessLauncher launcher{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(EachNotice, SystemProcessLauncherTest,
                         ::testing::Values(EndNotice::automatic, EndNotice::waiterThread), [](const auto& instance) {
                           return instance.param == EndNotice::automatic ? "automatic" : "waiterThread";
                         });

/// Sets a signal's disposition for the length of a test.
class Disposition {
 public:
  Disposition(int number, void (*handler)(int)) : number_(number), before_(::signal(number, handler)) {}
  ~Disposition() { ::signal(number_, before_); }
  Disposition(const Disposition&) = delete;
  Disposition& operator=(const Disposition&) = delete;

 private:
  int number_;
  void (*before_)(int);
};

/// The resources of this process when it has no child, after a failed launch has initialised everything that is lazy.
ProcessResources resourcesWithoutChildren() {
  LaunchSettings missing;
  missing.executable = "/no/such/file";
  EXPECT_THROW(SystemProcessLauncher::shared().launch(missing, nullptr), ProcessLaunchError);
  return ProcessResources::now();
}

}  // namespace

TEST_P(SystemProcessLauncherTest, DeliversBothOutputsAndTheExitStatus) {
  RecordedChild child(launcher, shell("echo out; echo err >&2; exit 7"));
  EXPECT_EQ(child.wholeOutput(), "out\n");
  EXPECT_EQ(child.wholeErrorOutput(), "err\n");
  EXPECT_EQ(child.waitForTermination(), exited(7));
  EXPECT_FALSE(child->isRunning());
  EXPECT_EQ(child->termination(), exited(7));
}

TEST_P(SystemProcessLauncherTest, TellsTheSignalThatEndedTheChild) {
  RecordedChild child(launcher, shell("kill -USR1 $$"));
  EXPECT_EQ(child.waitForTermination(), killedBy(SIGUSR1));
}

TEST_P(SystemProcessLauncherTest, TerminatesAChild) {
  RecordedChild child(launcher, helper({"hang"}));
  EXPECT_TRUE(child->isRunning());
  EXPECT_EQ(child->termination(), std::nullopt);
  EXPECT_GT(child->processIdentifier(), 1);
  EXPECT_EQ(::kill(child->processIdentifier(), 0), 0);
  child->terminate();
  EXPECT_EQ(child.waitForTermination(), killedBy(SIGTERM));
}

TEST_P(SystemProcessLauncherTest, KillsAChildThatIgnoresTermination) {
  RecordedChild child(launcher, helper({"ignore-termination"}));
  ASSERT_TRUE(child.waitForOutput("ready"));
  child->terminate();
  child->kill();
  EXPECT_EQ(child.waitForTermination(), killedBy(SIGKILL));
}

TEST_P(SystemProcessLauncherTest, SignalsNobodyOnceTheChildHasEnded) {
  RecordedChild child(launcher, shell("exit 0"));
  ASSERT_EQ(child.waitForTermination(), exited(0));
  child->terminate();
  child->kill();
  EXPECT_EQ(child->termination(), exited(0));
}

TEST_P(SystemProcessLauncherTest, TellsTheEndOnce) {
  RecordedChild child(launcher, shell("exit 0"));
  ASSERT_TRUE(child.waitForTermination());
  ASSERT_TRUE(child.waitForEndOfOutput());
  child.destroy();
  EXPECT_EQ(child.terminations(), 1);
}

TEST_P(SystemProcessLauncherTest, AnnouncesEachReadBeforeItsChunkAndBeforeTheEnd) {
  RecordedChild child(launcher, helper({"flood", "300000"}));
  ASSERT_TRUE(child.waitForEndOfOutput());
  const auto calls = child.calls();
  ASSERT_GE(calls.size(), 4U);
  ASSERT_EQ(calls.size() % 2, 0U);
  for (std::size_t call = 0; call < calls.size(); call += 2) {
    EXPECT_EQ(calls[call], "start");
    const bool isLast = call + 2 == calls.size();
    if (isLast) {
      EXPECT_EQ(calls[call + 1], "end");
    } else {
      EXPECT_THAT(calls[call + 1], ::testing::AnyOf("chunk", "nothing"));
    }
  }
  EXPECT_THAT(calls, ::testing::Contains("chunk"));
}

TEST_P(SystemProcessLauncherTest, WritesEverythingInOrder) {
  RecordedChild child(launcher, shell("exec cat"));
  std::string expected;
  for (std::size_t piece = 0; piece < 400; ++piece) {
    const std::string bytes(piece * 50 + 1, static_cast<char>('a' + piece % 26));
    expected += bytes;
    child->write(bytes);
  }
  child->write("");
  child->closeInput();
  EXPECT_FALSE(child->acceptsInput());
  child->write("too late");
  EXPECT_EQ(child.wholeOutput(), expected);
  EXPECT_EQ(child.waitForTermination(), exited(0));
}

TEST_P(SystemProcessLauncherTest, WritesFromManyThreadsWithoutTearingAPiece) {
  RecordedChild child(launcher, shell("exec cat"));
  std::vector<std::thread> threads;
  for (char letter = 'a'; letter < 'e'; ++letter) {
    threads.emplace_back([&child, letter] {
      auto line = std::string(3000, letter);
      line += '\n';
      for (int number = 0; number < 50; ++number) child->write(line);
    });
  }
  for (auto& thread : threads) thread.join();
  child->closeInput();
  const auto output = child.wholeOutput();
  ASSERT_TRUE(output);
  ASSERT_EQ(output->size(), 4U * 50 * 3001);
  for (std::size_t line = 0; line < output->size(); line += 3001) {
    const auto piece = std::string_view(*output).substr(line, 3001);
    EXPECT_EQ(piece.find_first_not_of(piece.front()), 3000U);
    EXPECT_EQ(piece.back(), '\n');
  }
}

TEST_P(SystemProcessLauncherTest, WritesFromTheThreadsOfThePoolToo) {
  RecordedChild child(launcher, shell("exec wc -c"));
  std::promise<void> written;
  ioScheduler().post([&child, &written] {
    child->write(std::string(1'000'000, 'x'));
    child->closeInput();
    written.set_value();
  });
  written.get_future().get();
  EXPECT_EQ(child.wholeOutput(), "1000000\n");
}

TEST_P(SystemProcessLauncherTest, NeverBlocksOnAChildThatDoesNotRead) {
  RecordedChild child(launcher, helper({"hang"}));
  for (int piece = 0; piece < 64; ++piece) child->write(std::string(1'000'000, 'x'));
  EXPECT_TRUE(child->acceptsInput());
  child->kill();
  EXPECT_EQ(child.waitForTermination(), killedBy(SIGKILL));
  EXPECT_TRUE(eventually([&child] { return !child->acceptsInput(); }));
}

TEST_P(SystemProcessLauncherTest, OutlivesABrokenPipe) {
  const Disposition fatal(SIGPIPE, SIG_DFL);
  RecordedChild child(launcher, helper({"close-input"}));
  ASSERT_TRUE(child.waitForOutput("closed"));
  child->write("nobody reads this");
  EXPECT_TRUE(eventually([&child] { return !child->acceptsInput(); }));
  child->write("nor this");
  EXPECT_TRUE(child->isRunning());
  child->kill();
  EXPECT_EQ(child.waitForTermination(), killedBy(SIGKILL));
}

TEST_P(SystemProcessLauncherTest, DeliversWhatAKilledChildLeftInThePipe) {
  RecordedChild child(launcher, helper({"write-and-die", "60000"}), RecordedChild::Reading::onDemand);
  EXPECT_EQ(child.waitForTermination(), killedBy(SIGKILL));
  EXPECT_TRUE(child->output()->hasUnreadBytes());
  child.startReading();
  EXPECT_EQ(child.wholeOutput(), std::string(60000, 'x'));
  EXPECT_FALSE(child->output()->hasUnreadBytes());
}

TEST_P(SystemProcessLauncherTest, DoesNotTakeAHangUpForUnreadBytes) {
  RecordedChild child(launcher, shell("exit 0"), RecordedChild::Reading::onDemand);
  ASSERT_EQ(child.waitForTermination(), exited(0));
  EXPECT_FALSE(child->output()->hasUnreadBytes());
}

TEST_P(SystemProcessLauncherTest, NoticesTheEndThoughAGrandchildHoldsThePipes) {
  Fifo grandchildsLife;
  RecordedChild child(launcher, helper({"leave-grandchild", grandchildsLife.path(), "3"}));
  EXPECT_EQ(child.waitForTermination(), exited(3));
  ASSERT_TRUE(child.waitForOutput("left"));
  EXPECT_FALSE(child->output()->hasUnreadBytes());
  EXPECT_THAT(child.calls(), ::testing::Not(::testing::Contains("end")));
  EXPECT_EQ(child.calls().back(), "chunk") << "no read is announced that nothing answers";
  grandchildsLife.release();
  EXPECT_TRUE(child.waitForEndOfOutput());
}

TEST_P(SystemProcessLauncherTest, NoticesTheEndInAnApplicationThatIgnoresSIGCHLD) {
  const testing::IgnoredChildren ignored;
  RecordedChild child(launcher, shell("read line; exit 7"));
  child->closeInput();
  EXPECT_THAT(child.waitForTermination(), endsAs(exited(7)));
  EXPECT_FALSE(child->isRunning());
}

TEST_P(SystemProcessLauncherTest, NoticesTheEndInAnApplicationThatReapsEveryChild) {
  const testing::ReapingThread reaper;
  for (int round = 0; round < 20; ++round) {
    RecordedChild child(launcher, shell("read line; exit 7"));
    child->closeInput();
    EXPECT_THAT(child.waitForTermination(), endsAs(exited(7)));
  }
}

TEST_P(SystemProcessLauncherTest, StopsReadingForGood) {
  RecordedChild child(launcher, helper({"flood", "100000000"}));
  ASSERT_TRUE(child.waitForOutput("x"));
  child->output()->stop();
  EXPECT_FALSE(child->output()->hasUnreadBytes());
  child->output()->start({});
  EXPECT_EQ(child.waitForTermination(), killedBy(SIGPIPE)) << "the pipe is closed";
  EXPECT_THAT(child.calls(), ::testing::Not(::testing::Contains("end")));
}

TEST_P(SystemProcessLauncherTest, MayBeStoppedFromAHandler) {
  const auto child = launcher.launch(shell("exec yes"), nullptr);
  auto chunks = std::make_shared<std::atomic<int>>(0);
  PipeReadHandlers handlers;
  handlers.onChunk = [chunks, reader = child->output()](const ByteBuffer&) {
    ++*chunks;
    reader->stop();
  };
  child->output()->start(std::move(handlers));
  EXPECT_TRUE(eventually([&child] { return !child->isRunning(); }));
  EXPECT_EQ(*chunks, 1);
}

TEST_P(SystemProcessLauncherTest, LetsGoOfTheHandlers) {
  auto token = std::make_shared<int>(0);
  {
    const auto child = launcher.launch(shell("echo x"), [token](const Termination&) {});
    for (const auto& reader : {child->output(), child->errorOutput()}) {
      PipeReadHandlers handlers;
      handlers.onEnd = [token, reader] {};
      reader->start(std::move(handlers));
    }
    EXPECT_TRUE(eventually([&token] { return token.use_count() == 1; })) << "after the end";
  }
  {
    const auto child = launcher.launch(helper({"hang"}), [token](const Termination&) {});
    PipeReadHandlers handlers;
    handlers.onEnd = [token, reader = child->output()] {};
    child->output()->start(std::move(handlers));
    child->terminate();
  }
  EXPECT_TRUE(eventually([&token] { return token.use_count() == 1; })) << "after the object is gone";
}

TEST_P(SystemProcessLauncherTest, LeavesNothingBehindWhenAChildCannotBeStarted) {
  const auto before = resourcesWithoutChildren();
  LaunchSettings missing;
  missing.executable = "/no/such/file";
  for (int attempt = 0; attempt < 10; ++attempt) {
    EXPECT_THROW(launcher.launch(missing, nullptr), ProcessLaunchError);
  }
  EXPECT_TRUE(ProcessResources::now().isNoMoreThan(before));
}

TEST_P(SystemProcessLauncherTest, LeavesNothingBehindHoweverFewDescriptorsThereAre) {
  const auto before = resourcesWithoutChildren();
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  int failures = 0;
  // Each number of free descriptors makes another step of the launch fail.
  for (rlim_t room = before.descriptors; room < before.descriptors + 14; ++room) {
    const rlimit scarce{room, limit.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &scarce);
    try {
      launcher.launch(helper({"hang"}), nullptr)->kill();
    } catch (const ProcessLaunchError&) {
      ++failures;
    }
    ::setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_TRUE(eventually([&before] { return ProcessResources::now().isNoMoreThan(before); }))
        << "with room for " << room;
  }
  EXPECT_GT(failures, 5);
  EXPECT_LT(failures, 14);
}

/// The state of a child object at the moment of its destruction.
struct DestructionCase {
  const char* name;
  LaunchSettings settings;
  std::function<void(RecordedChild&)> before;
};

TEST_P(SystemProcessLauncherTest, MayBeDestroyedAtEveryState) {
  const std::vector<DestructionCase> cases = {
      {"at once", shell("exec cat"), [](RecordedChild&) {}},
      {"reading", helper({"flood", "1000000000"}), [](RecordedChild& child) { child.waitForOutput("x"); }},
      {"writing", shell("exec sleep 1000"),
       [](RecordedChild& child) {
         child->write(std::string(1'000'000, 'x'));
         child->terminate();
       }},
      {"closing with a full queue", shell("exec sleep 1000"),
       [](RecordedChild& child) {
         child->write(std::string(1'000'000, 'x'));
         child->closeInput();
         child->terminate();
       }},
      {"input closed", shell("exec cat"), [](RecordedChild& child) { child->closeInput(); }},
      {"terminating", helper({"hang"}), [](RecordedChild& child) { child->terminate(); }},
      {"output ended", shell("exec cat"),
       [](RecordedChild& child) {
         child->closeInput();
         child.waitForEndOfOutput();
       }},
      {"ended", shell("exit 1"), [](RecordedChild& child) { child.waitForTermination(); }},
  };
  const auto before = resourcesWithoutChildren();
  for (int round = 0; round < 10; ++round) {
    for (const auto& state : cases) {
      RecordedChild child(launcher, state.settings);
      state.before(child);
      child.destroy();
      EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; })) << state.name;
    }
  }
  EXPECT_TRUE(eventually([&before] { return ProcessResources::now().isNoMoreThan(before); }));
}

TEST_P(SystemProcessLauncherTest, MayBeDestroyedFromItsHandlers) {
  for (const bool fromOutput : {true, false}) {
    const auto child = std::make_shared<std::unique_ptr<ChildProcess>>();
    std::mutex inUse;
    std::promise<void> destroyed;
    const auto destroy = [&inUse, &destroyed, child] {
      {
        const std::lock_guard lock(inUse);
        child->reset();
      }
      destroyed.set_value();
    };
    std::unique_lock lock(inUse);
    *child = launcher.launch(shell("read line; echo x; read line"), [destroy, fromOutput](const Termination&) {
      if (!fromOutput) destroy();
    });
    PipeReadHandlers handlers;
    handlers.onChunk = [destroy, fromOutput](const ByteBuffer&) {
      if (fromOutput) destroy();
    };
    (*child)->output()->start(std::move(handlers));
    (*child)->write("go\n");
    if (!fromOutput) (*child)->closeInput();
    lock.unlock();
    EXPECT_EQ(destroyed.get_future().wait_for(testing::patience), std::future_status::ready);
    EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
  }
}

TEST_P(SystemProcessLauncherTest, LeavesNothingBehindAfterAThousandChildren) {
  const auto before = resourcesWithoutChildren();
  for (int round = 0; round < 100; ++round) {
    std::vector<std::unique_ptr<RecordedChild>> children;
    for (int number = 0; number < 10; ++number) {
      children.push_back(std::make_unique<RecordedChild>(launcher, helper({"flood", "4096"})));
    }
    for (auto& child : children) {
      EXPECT_EQ(child->waitForTermination(), exited(0));
      EXPECT_TRUE(child->waitForEndOfOutput());
    }
  }
  EXPECT_TRUE(eventually([&before] { return ProcessResources::now().isNoMoreThan(before); }));
}

TEST(SystemProcessLauncher, IsSharedByDefault) {
  RecordedChild child(SystemProcessLauncher::shared(), shell("exit 5"));
  EXPECT_EQ(child.waitForTermination(), exited(5));
}

}  // namespace ormel::detail
