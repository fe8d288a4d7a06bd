#include <benchmark/benchmark.h>

#include <asio/awaitable.hpp>
#include <asio/co_spawn.hpp>
#include <asio/defer.hpp>
#include <asio/detached.hpp>
#include <asio/experimental/channel.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <asio/strand.hpp>
#include <asio/use_awaitable.hpp>
#include <chrono>
#include <cstdint>
#include <stdexcept>

#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Platform/IORuntime.h"

// Each pair does the same work, once with the library's type and once with Asio's nearest one, on one thread that runs
// an Asio context, and is to be compared within one run of the program.

namespace {

using namespace ormel;

constexpr int perRound = 10'000;

/// Counts single operations, of which each iteration of the benchmark makes `perRound`.
void countRounds(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * perRound); }

/// The library's own way of posting, on a context that the benchmark runs itself. It has no timers.
class ContextScheduler final : public Scheduler {
 public:
  explicit ContextScheduler(asio::io_context& context) noexcept : context_(context) {}

  using Scheduler::post;
  void post(detail::WorkItem& item) noexcept override {
    const auto run = [this, &item] {
      detail::executionState().scheduler = this;
      item.run();
      detail::executionState().scheduler = nullptr;
    };
    if (detail::executionState().isLeaving) {
      asio::defer(context_, run);
    } else {
      asio::post(context_, run);
    }
  }
  std::uint64_t now() const noexcept override { return 0; }
  void arm(detail::TimerItem&, std::uint64_t) override { throw std::logic_error("no timers here"); }
  bool disarm(detail::TimerItem&) noexcept override { return false; }
  std::size_t strandBatch() const noexcept override { return detail::ioScheduler().strandBatch(); }

 private:
  asio::io_context& context_;
};

class OnContext {
 public:
  Scheduler& scheduler() { return scheduler_; }
  asio::io_context& context() { return context_; }

  void run(Task<void> task) {
    std::move(task).onScheduler(scheduler_).detach();
    runContext();
  }
  void runContext() {
    context_.run();
    context_.restart();
  }

 private:
  asio::io_context context_{1};
  ContextScheduler scheduler_{context_};
};

void strandHop(benchmark::State& state) {
  OnContext on;
  const Strand strand(on.scheduler());
  auto hop = [](Strand home) -> Task<void> {
    for (int i = 0; i < perRound; ++i) co_await home.yield();
  };
  for (auto _ : state) on.run(hop(strand).onStrand(strand));
  countRounds(state);
}
BENCHMARK(strandHop);

void strandHopOfAsio(benchmark::State& state) {
  asio::io_context context(1);
  auto strand = asio::make_strand(context);
  auto hop = [](asio::strand<asio::io_context::executor_type> home) -> asio::awaitable<void> {
    for (int i = 0; i < perRound; ++i) co_await asio::post(home, asio::use_awaitable);
  };
  for (auto _ : state) {
    asio::co_spawn(strand, hop(strand), asio::detached);
    context.run();
    context.restart();
  }
  countRounds(state);
}
BENCHMARK(strandHopOfAsio);

/// Plain callbacks, without a coroutine, that post themselves again.
class StrandPosts {
 public:
  explicit StrandPosts(Strand strand) : strand_(std::move(strand)) {}
  void go(int left) {
    strand_.post([this, left] {
      if (left > 1) go(left - 1);
    });
  }

 private:
  Strand strand_;
};

void strandPost(benchmark::State& state) {
  OnContext on;
  StrandPosts posts{Strand(on.scheduler())};
  for (auto _ : state) {
    posts.go(perRound);
    on.runContext();
  }
  countRounds(state);
}
BENCHMARK(strandPost);

class StrandPostsOfAsio {
 public:
  explicit StrandPostsOfAsio(asio::strand<asio::io_context::executor_type> strand) : strand_(std::move(strand)) {}
  void go(int left) {
    asio::post(strand_, [this, left] {
      if (left > 1) go(left - 1);
    });
  }

 private:
  asio::strand<asio::io_context::executor_type> strand_;
};

void strandPostOfAsio(benchmark::State& state) {
  asio::io_context context(1);
  StrandPostsOfAsio posts(asio::make_strand(context));
  for (auto _ : state) {
    posts.go(perRound);
    context.run();
    context.restart();
  }
  countRounds(state);
}
BENCHMARK(strandPostOfAsio);

Task<int> number(int value) { co_return value; }

void awaitTask(benchmark::State& state) {
  OnContext on;
  auto loop = []() -> Task<void> {
    for (int i = 0; i < perRound; ++i) benchmark::DoNotOptimize(co_await number(i));
  };
  for (auto _ : state) on.run(loop());
  countRounds(state);
}
BENCHMARK(awaitTask);

asio::awaitable<int> numberOfAsio(int value) { co_return value; }

void awaitTaskOfAsio(benchmark::State& state) {
  asio::io_context context(1);
  auto loop = []() -> asio::awaitable<void> {
    for (int i = 0; i < perRound; ++i) benchmark::DoNotOptimize(co_await numberOfAsio(i));
  };
  for (auto _ : state) {
    asio::co_spawn(context, loop(), asio::detached);
    context.run();
    context.restart();
  }
  countRounds(state);
}
BENCHMARK(awaitTaskOfAsio);

void oneShotWait(benchmark::State& state) {
  OnContext on;
  const Strand strand(on.scheduler());
  auto loop = [](Strand home) -> Task<void> {
    for (int i = 0; i < perRound; ++i) {
      OneShot<int> oneShot;
      home.post([resolver = oneShot.resolver(), i] { resolver.resume(i); });
      benchmark::DoNotOptimize(co_await oneShot.wait());
    }
  };
  for (auto _ : state) on.run(loop(strand).onStrand(strand));
  countRounds(state);
}
BENCHMARK(oneShotWait);

using AsioStrand = asio::strand<asio::io_context::executor_type>;
using AsioChannel = asio::experimental::channel<AsioStrand, void(asio::error_code, int)>;

void oneShotWaitOfAsio(benchmark::State& state) {
  asio::io_context context(1);
  auto strand = asio::make_strand(context);
  auto loop = [](AsioStrand home) -> asio::awaitable<void> {
    for (int i = 0; i < perRound; ++i) {
      auto oneShot = std::make_shared<AsioChannel>(home, 1);
      asio::post(home, [oneShot, i] { oneShot->try_send(asio::error_code(), i); });
      benchmark::DoNotOptimize(co_await oneShot->async_receive(asio::use_awaitable));
    }
  };
  for (auto _ : state) {
    asio::co_spawn(strand, loop(strand), asio::detached);
    context.run();
    context.restart();
  }
  countRounds(state);
}
BENCHMARK(oneShotWaitOfAsio);

/// Producer and consumer take turns, so that the consumer waits for each event.
void channelTurns(benchmark::State& state) {
  OnContext on;
  const Strand strand(on.scheduler());
  auto produce = [](Strand home, EventProducer<int> into) -> Task<void> {
    for (int i = 0; i < perRound; ++i) {
      into.yield(i);
      co_await home.yield();
    }
    into.finish();
  };
  auto consume = [](EventChannel<int> events) -> Task<void> {
    while (auto event = co_await events.next()) benchmark::DoNotOptimize(*event);
  };
  for (auto _ : state) {
    auto [producer, events] = EventChannel<int>::make();
    consume(std::move(events)).onStrand(strand).detach();
    produce(strand, std::move(producer)).onStrand(strand).detach();
    on.runContext();
  }
  countRounds(state);
}
BENCHMARK(channelTurns);

void channelTurnsOfAsio(benchmark::State& state) {
  asio::io_context context(1);
  auto strand = asio::make_strand(context);
  auto produce = [](AsioChannel& into) -> asio::awaitable<void> {
    for (int i = 0; i < perRound; ++i) co_await into.async_send(asio::error_code(), i, asio::use_awaitable);
    into.close();
  };
  auto consume = [](AsioChannel& from) -> asio::awaitable<void> {
    for (int i = 0; i < perRound; ++i) benchmark::DoNotOptimize(co_await from.async_receive(asio::use_awaitable));
  };
  for (auto _ : state) {
    AsioChannel channel(strand, 1);
    asio::co_spawn(strand, consume(channel), asio::detached);
    asio::co_spawn(strand, produce(channel), asio::detached);
    context.run();
    context.restart();
  }
  countRounds(state);
}
BENCHMARK(channelTurnsOfAsio);

/// The producer is ahead, so that the consumer never waits.
void channelBacklog(benchmark::State& state) {
  OnContext on;
  auto consume = [](EventChannel<int> events) -> Task<void> {
    while (auto event = co_await events.next()) benchmark::DoNotOptimize(*event);
  };
  for (auto _ : state) {
    auto [producer, events] = EventChannel<int>::make();
    for (int i = 0; i < perRound; ++i) producer.yield(i);
    producer.finish();
    on.run(consume(std::move(events)));
  }
  countRounds(state);
}
BENCHMARK(channelBacklog);

void channelBacklogOfAsio(benchmark::State& state) {
  asio::io_context context(1);
  auto consume = [](AsioChannel& from) -> asio::awaitable<void> {
    for (int i = 0; i < perRound; ++i) benchmark::DoNotOptimize(co_await from.async_receive(asio::use_awaitable));
  };
  for (auto _ : state) {
    AsioChannel channel(asio::make_strand(context), perRound);
    for (int i = 0; i < perRound; ++i) channel.try_send(asio::error_code(), i);
    asio::co_spawn(context, consume(channel), asio::detached);
    context.run();
    context.restart();
  }
  countRounds(state);
}
BENCHMARK(channelBacklogOfAsio);

void timerArmAndCancel(benchmark::State& state) {
  Scheduler& scheduler = detail::ioScheduler();
  const int subject = 0;
  for (auto _ : state) {
    for (int i = 0; i < perRound; ++i) {
      auto timer = scheduler.postAfter(std::chrono::seconds(30), [&subject] { benchmark::DoNotOptimize(&subject); });
      timer.cancel();
    }
  }
  countRounds(state);
}
BENCHMARK(timerArmAndCancel);

void timerArmAndCancelOfAsio(benchmark::State& state) {
  asio::io_context context(1);
  for (auto _ : state) {
    for (int i = 0; i < perRound; ++i) {
      asio::steady_timer timer(context, std::chrono::seconds(30));
      timer.async_wait([&context](asio::error_code) { benchmark::DoNotOptimize(&context); });
      timer.cancel();
    }
    context.run();
    context.restart();
  }
  countRounds(state);
}
BENCHMARK(timerArmAndCancelOfAsio);

void simulatedSteps(benchmark::State& state) {
  std::uint64_t steps = 0;
  for (auto _ : state) {
    SimulatedScheduler scheduler(1);
    auto hop = [](Strand home) -> Task<void> {
      for (int i = 0; i < perRound; ++i) co_await home.yield();
    };
    for (int i = 0; i < 8; ++i) {
      const Strand strand(scheduler);
      hop(strand).onStrand(strand).detach();
    }
    steps += scheduler.run();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(steps));
}
BENCHMARK(simulatedSteps);

void simulatedSleeps(benchmark::State& state) {
  std::uint64_t steps = 0;
  for (auto _ : state) {
    SimulatedScheduler scheduler(1);
    auto nap = [](Scheduler& on) -> Task<void> {
      for (int i = 0; i < perRound; ++i) co_await sleepFor(on, std::chrono::seconds(1 + i % 3));
    };
    for (int i = 0; i < 8; ++i) nap(scheduler).onScheduler(scheduler).detach();
    steps += scheduler.run();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(steps));
}
BENCHMARK(simulatedSleeps);

}  // namespace
