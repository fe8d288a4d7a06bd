#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "OrmelSDK/Embedding/ScarceMemory/FailingAllocations.h"
#include "Support/Eventually.h"
#include "Support/ProcessResources.h"
#include "Support/Sanitizers.h"
#include "Support/TemporaryDirectory.h"

namespace ormel {
namespace {

using testing::FailingAllocations;
using testing::optionsFor;
using testing::ProcessResources;
using testing::SimulatorScenario;

/// How long one life may take before it counts as hung.
constexpr unsigned secondsForALife = 20;
constexpr int livesToWarmUp = 5;
/// A block more or less is in the hands of a thread that has yet to end; a leak grows with each life.
constexpr int livesToShowALeak = 10;
/// The first use of the library makes fewer allocations of its own.
constexpr long lastOfFirstUse = 150;
/// All allocations until the turn is over fail.
constexpr long all = std::numeric_limits<long>::max() / 2;
/// Set to a file, it is told there which calls led to an allocation whose failure ended the process or left memory.
constexpr const char* whereVariable = "ORMEL_TEST_OF_MEMORY_WHERE";

/// Outcomes of a life, as they go over the pipe between the process that tries and the one that judges.
enum class Outcome : char {
  begun,
  success,
  libraryError,
  badAlloc,
  foreignError,
  notHit,
  retryFailed,
  leftBehind,
  leaks
};

struct Report {
  long number = 0;
  Outcome outcome = Outcome::begun;
  /// Blocks of memory that are there after the life, and were not before it.
  long kept = 0;
  std::array<char, 160> text{};
};

bool hasChildren() {
  siginfo_t info{};
  return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

/// A start, a turn with a handler and a release. Nothing but what the library does for it is counted.
class Life {
 public:
  /// So many allocations fail in a row, or as many as there are until the turn is over.
  explicit Life(long count = 1)
      : scenario_(testing::embeddedTurnWithApproval), options_(optionsFor(scenario_)), count_(count) {
    options_.executableTrustAssessment = [](const std::string&) { return OrmelExecutableTrustAssessment::trusted(); };
    threadOptions_ = testing::whenAskedForApproval([] {});
  }

  /// Fails the allocations from this number on, none if it is 0; counted from the making of the thread or from its use.
  Report live(long number, bool fromUse = false) const {
    Report report;
    report.number = number;
    if (number > 0 && !fromUse) FailingAllocations::arm(number, count_);
    try {
      Thread thread = Ormel(options_).startThread(threadOptions_);
      if (number > 0 && fromUse) FailingAllocations::arm(number, count_);
      thread.run("go").get();
      report.outcome = Outcome::success;
    } catch (const Error& error) {
      tell(report, Outcome::libraryError, error.what());
    } catch (const std::bad_alloc& error) {
      tell(report, Outcome::badAlloc, error.what());
    } catch (const std::exception& error) {
      tell(report, Outcome::foreignError, error.what());
    }
    if (count_ == all) FailingAllocations::disarm();
    // The release goes on after the last handle has gone.
    static_cast<void>(testing::eventually([] { return !hasChildren(); }));
    if (number > 0 && !FailingAllocations::disarm()) report.outcome = Outcome::notHit;
    return report;
  }

 private:
  static void tell(Report& report, Outcome outcome, const char* text) {
    report.outcome = outcome;
    std::string_view(text).copy(report.text.data(), report.text.size() - 1);
  }

  SimulatorScenario scenario_;
  OrmelOptions options_;
  ThreadOptions threadOptions_;
  const long count_;
};

class Worker {
 public:
  Worker(int pipe, const std::string& errors) : pipe_(pipe) {
    const int file = ::open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    ::dup2(file, STDERR_FILENO);
    ::close(file);
    if (!std::getenv(whereVariable)) return;
    ::signal(SIGABRT, [](int) { FailingAllocations::tellWhere(STDERR_FILENO); });
  }

  /// Lets each allocation from this one on fail in turn, and ends the process.
  [[noreturn]] void tryAll(long first, long step, long count, bool isWarm) {
    const Life life(count);
    if (isWarm) {
      for (int lives = 0; lives < livesToWarmUp; ++lives) life.live(0);
      settle();
    }
    for (long number = first;; number += step) {
      if (!tryOne(life, number, isWarm) || !isWarm) break;
    }
    ::_exit(0);
  }

 private:
  static bool leaksAt(const Life& life, long number) {
    ::alarm(secondsForALife + static_cast<unsigned>(testing::patience.count()));
    const long before = FailingAllocations::living();
    for (int lives = 0; lives < livesToShowALeak; ++lives) life.live(number);
    life.live(0);
    // The pool's threads may still be freeing what the last lives used.
    if (testing::eventually([&] { return FailingAllocations::living() - before < livesToShowALeak; })) return false;
    FailingAllocations::tellWhere(STDERR_FILENO);
    return true;
  }

  bool tryOne(const Life& life, long number, bool isWarm) {
    send({number, Outcome::begun, 0, {}});
    ::alarm(secondsForALife);
    const auto before = ProcessResources::now();
    const long livingBefore = FailingAllocations::living();
    Report report = life.live(number, !isWarm);
    if (report.outcome != Outcome::notHit) {
      const Report retried = life.live(0);
      if (retried.outcome != Outcome::success) {
        report.outcome = Outcome::retryFailed;
        report.text = retried.text;
      }
      if (!testing::eventually([&] { return isNoMoreThan(before); })) report.outcome = Outcome::leftBehind;
      settle();
      report.kept = FailingAllocations::living() - livingBefore;
      if (isWarm && report.kept > 0 && leaksAt(life, number)) report.outcome = Outcome::leaks;
    }
    send(report);
    return report.outcome != Outcome::notHit;
  }

  /// The pool's own threads come with the first life of a cold process.
  static bool isNoMoreThan(const ProcessResources& before) {
    ProcessResources allowed = before;
    allowed.threads += before.threads == 1 ? 3 : 1;
    allowed.descriptors += before.threads == 1 ? 4 : 0;
    return ProcessResources::now().isNoMoreThan(allowed);
  }

  static void settle() {
    long last = -1;
    for (int tries = 0; tries < 20; ++tries) {
      const long now = FailingAllocations::living();
      if (now == last) return;
      last = now;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  void send(const Report& report) const {
    [[maybe_unused]] const auto written = ::write(pipe_, &report, sizeof report);
  }

  int pipe_;
};

struct Table {
  std::map<std::string, int> outcomes;
  std::vector<std::string> faults;
  long tried = 0;
  long kept = 0;
};

std::string firstLineOf(const std::string& file) {
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  return line.empty() ? "without a word" : line;
}

std::string endOf(int status) {
  if (!WIFSIGNALED(status)) return "ended with status " + std::to_string(WEXITSTATUS(status)) + ", ";
  if (WTERMSIG(status) == SIGALRM) return "hung, ";
  return "ended by signal " + std::to_string(WTERMSIG(status)) + ", ";
}

/// Starts a process that has not used the library and judges what it tells.
class Trial {
 public:
  explicit Trial(bool isWarm, long step, long count = 1) : isWarm_(isWarm), step_(step), count_(count) {}

  Table run() {
    for (long next = 1; next > 0 && (isWarm_ || next <= lastOfFirstUse);) next = runFrom(next);
    return table_;
  }

 private:
  /// The number to go on with in another process; 0 at the end.
  long runFrom(long first) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return 0;
    const std::string errors = folder_.path() / "errors";
    const pid_t child = ::fork();
    if (child == 0) Worker(ends[1], errors).tryAll(first, step_, count_, isWarm_);
    ::close(ends[1]);
    Report report;
    report.outcome = Outcome::notHit;
    while (::read(ends[0], &report, sizeof report) == sizeof report) judge(report);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (const char* told = std::getenv(whereVariable)) {
      std::ofstream(told, std::ios::app) << "=== " << report.number << '\n' << std::ifstream(errors).rdbuf();
    }
    if (status != 0) return judgeEnd(report, status, firstLineOf(errors));
    return report.outcome == Outcome::notHit ? 0 : report.number + step_;
  }

  void judge(const Report& report) {
    if (report.outcome == Outcome::begun || report.outcome == Outcome::notHit) return;
    ++table_.tried;
    table_.kept += report.kept;
    const std::string text(report.text.data());
    const std::string told = "allocation " + std::to_string(report.number) + ": ";
    switch (report.outcome) {
      case Outcome::success:
        ++table_.outcomes["success"];
        break;
      case Outcome::libraryError:
        ++table_.outcomes["ormel::Error: " + text];
        break;
      case Outcome::badAlloc:
        ++table_.outcomes["std::bad_alloc"];
        break;
      case Outcome::foreignError:
        table_.faults.push_back(told + "a foreign error: " + text);
        break;
      case Outcome::retryFailed:
        table_.faults.push_back(told + "the next try failed: " + text);
        break;
      case Outcome::leaks:
        table_.faults.push_back(told + "memory is left behind each time");
        break;
      default:
        table_.faults.push_back(told + "something is left behind");
    }
  }

  long judgeEnd(const Report& last, int status, const std::string& word) {
    ++table_.tried;
    const bool isHung = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM;
    if (isHung || word.rfind("Fatal error: Out of memory", 0) != 0) {
      table_.faults.push_back("allocation " + std::to_string(last.number) + ": " + endOf(status) + word);
    } else {
      ++table_.outcomes["ended: " + word];
    }
    return last.number + step_;
  }

  bool isWarm_;
  long step_;
  long count_;
  testing::TemporaryDirectory folder_;
  Table table_;
};

void expectSound(const Table& table, long atLeast = 20) {
  std::printf("%ld allocations failed in turn; %ld blocks kept\n", table.tried, table.kept);
  for (const auto& [outcome, count] : table.outcomes) std::printf("%6d  %s\n", count, outcome.c_str());
  for (const auto& fault : table.faults) ADD_FAILURE() << fault;
  EXPECT_GT(table.tried, atLeast);
}

constexpr long usualStep = testing::isSanitized ? 7 : 1;
/// The first use has fewer allocations, and each of them happens once in the life of a process.
constexpr long firstUseStep = testing::isSanitized ? 2 : 1;

TEST(ScarceMemory, OfOneAllocationAtTheFirstUseIsAnErrorOrASuccessAndTheNextTryWorks) {
  expectSound(Trial(false, firstUseStep).run());
}

TEST(ScarceMemory, OfOneAllocationInALifeIsAnErrorOrASuccessAndTheNextTryWorks) {
  expectSound(Trial(true, usualStep).run());
}

/// Memory is short for a while rather than once: what a failure is told by fails too.
constexpr std::array<long, 3> runs = {3, 50, all};
/// A few seconds' worth of places for them to begin.
constexpr long stepOfRuns = 17 * usualStep;

TEST(ScarceMemory, OfManyAllocationsInARowAtTheFirstUseIsAnErrorOrASuccessAndTheNextTryWorks) {
  for (const long count : runs) expectSound(Trial(false, stepOfRuns, count).run(), 0);
}

TEST(ScarceMemory, OfManyAllocationsInARowInALifeIsAnErrorOrASuccessAndTheNextTryWorks) {
  for (const long count : runs) {
    SCOPED_TRACE("a run of " + std::to_string(count));
    expectSound(Trial(true, stepOfRuns, count).run(), 3);
  }
}

}  // namespace
}  // namespace ormel
