#include <benchmark/benchmark.h>

#include <asio/awaitable.hpp>
#include <asio/co_spawn.hpp>
#include <asio/defer.hpp>
#include <asio/detached.hpp>
#include <asio/experimental/awaitable_operators.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <asio/strand.hpp>
#include <asio/use_awaitable.hpp>
#include <chrono>
#include <utility>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/WhenAll.h"
#include "OrmelSDK/Concurrency/WithTimeout.h"
#include "OrmelSDK/Platform/IORuntime.h"

// Tasks that are awaited together, each of which hops once on its strand, beside Asio's own way of doing the same: both
// on a context that the benchmark runs on its one thread.
namespace {

using namespace ormel;
using namespace asio::experimental::awaitable_operators;
using AsioStrand = asio::strand<asio::io_context::executor_type>;

constexpr int waitsPerRound = 2'000;
constexpr std::chrono::minutes limit{1};

/// Work on the context of the benchmark, timers on the library's own queue.
class TimedContextScheduler final : public Scheduler {
 public:
  using Scheduler::post;
  void post(ormel::detail::WorkItem& item) noexcept override {
    const auto run = [this, &item] {
      ormel::detail::executionState().scheduler = this;
      item.run();
      ormel::detail::executionState().scheduler = nullptr;
    };
    if (ormel::detail::executionState().isLeaving) {
      asio::defer(context_, run);
    } else {
      asio::post(context_, run);
    }
  }
  std::uint64_t now() const noexcept override { return timers_.now(); }
  void arm(ormel::detail::TimerItem& item, std::uint64_t deadline) override { timers_.arm(item, deadline); }
  bool disarm(ormel::detail::TimerItem& item) noexcept override { return timers_.disarm(item); }
  std::size_t strandBatch() const noexcept override { return timers_.strandBatch(); }

  void run(Task<void> task) {
    std::move(task).onScheduler(*this).detach();
    context_.run();
    context_.restart();
  }

 private:
  asio::io_context context_{1};
  Scheduler& timers_ = ormel::detail::ioScheduler();
};

void countWaits(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * waitsPerRound); }

template <typename Loop>
void measure(benchmark::State& state, Loop loop) {
  TimedContextScheduler scheduler;
  const Strand strand(scheduler);
  for (auto _ : state) scheduler.run(loop(strand).onStrand(strand));
  countWaits(state);
}

template <typename Loop>
void measureOfAsio(benchmark::State& state, Loop loop) {
  asio::io_context context(1);
  const AsioStrand strand = asio::make_strand(context);
  for (auto _ : state) {
    asio::co_spawn(strand, loop(strand), asio::detached);
    context.run();
    context.restart();
  }
  countWaits(state);
}

Task<int> hop(Strand home, int value) {
  co_await home.yield();
  co_return value;
}

asio::awaitable<int> hopOfAsio(AsioStrand home, int value) {
  co_await asio::post(home, asio::use_awaitable);
  co_return value;
}

void taskWithTimeout(benchmark::State& state) {
  measure(state, [](Strand home) -> Task<void> {
    for (int i = 0; i < waitsPerRound; ++i) {
      auto timed = withTimeout(hop(home, i), limit);
      benchmark::DoNotOptimize(co_await std::move(timed));
    }
  });
}
BENCHMARK(taskWithTimeout);

void taskWithTimeoutOfAsio(benchmark::State& state) {
  measureOfAsio(state, [](AsioStrand home) -> asio::awaitable<void> {
    for (int i = 0; i < waitsPerRound; ++i) {
      asio::steady_timer timer(home, limit);
      benchmark::DoNotOptimize(co_await (hopOfAsio(home, i) || timer.async_wait(asio::use_awaitable)));
    }
  });
}
BENCHMARK(taskWithTimeoutOfAsio);

void allOfTwoTasks(benchmark::State& state) {
  measure(state, [](Strand home) -> Task<void> {
    for (int i = 0; i < waitsPerRound; ++i) {
      auto both = whenAll(hop(home, i), hop(home, i));
      benchmark::DoNotOptimize(co_await std::move(both));
    }
  });
}
BENCHMARK(allOfTwoTasks);

void allOfTwoTasksOfAsio(benchmark::State& state) {
  measureOfAsio(state, [](AsioStrand home) -> asio::awaitable<void> {
    for (int i = 0; i < waitsPerRound; ++i) {
      benchmark::DoNotOptimize(co_await (hopOfAsio(home, i) && hopOfAsio(home, i)));
    }
  });
}
BENCHMARK(allOfTwoTasksOfAsio);

}  // namespace
