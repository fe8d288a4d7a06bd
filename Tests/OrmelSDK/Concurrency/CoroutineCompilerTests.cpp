// g++ 12 miscompiles a temporary of aggregate or closure type with a non-trivial member inside a full expression that
// contains co_await: it copies it bytewise and destroys it twice. These tests hold, on every compiler, that the ways of
// writing which the library uses instead make and destroy each object once. The broken ways are not run: what they do
// is undefined. They are, with Options an aggregate:
//
//   co_await f(Options{...});  co_await f({.text = x});  co_await [x] { ... }();  co_await f([x] { ... });
//   c ? co_await a() : T();    Options{co_await a()};    an awaiter that is an aggregate
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/TaskGroup.h"
#include "Support/ConcurrencySchedulers.h"

namespace ormel {
namespace {

/// Counts live objects, and detects when it is used or destroyed as a bytewise copy of another one.
class Counted {
 public:
  static inline int alive = 0;
  static inline int broken = 0;

  explicit Counted(std::string text) : text_(std::move(text)), self_(this) { ++alive; }
  Counted(const Counted& other) : text_(other.text()), self_(this) { ++alive; }
  Counted(Counted&& other) noexcept : text_(std::move(other.text_)), self_(this) { ++alive; }
  Counted& operator=(const Counted&) = default;
  ~Counted() {
    if (self_ != this) ++broken;
    --alive;
  }

  const std::string& text() const {
    if (self_ != this) ++broken;
    return text_;
  }

 private:
  std::string text_;
  const void* self_;
};

/// A parameter type as the library declares them: with a constructor, so that it is no aggregate.
struct Options {
  Options() = default;
  Options(Counted only) : values{std::move(only)} {}
  std::vector<Counted> values;
};
static_assert(!std::is_aggregate_v<Options>);

constexpr const char* longText = "a text that is too long for the space inside a string object";

Task<std::string> byValue(Options options) { co_return options.values.at(0).text(); }
Task<std::string> byReference(const Options& options) { co_return options.values.at(0).text(); }
Task<Counted> make() { co_return Counted(longText); }

template <typename Function>
Task<std::string> call(Function function) {
  co_return function();
}

class CoroutineCompiler : public ::testing::Test {
 protected:
  void SetUp() override { Counted::alive = Counted::broken = 0; }
  void TearDown() override {
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(Counted::broken, 0);
  }

  testing::Simulated runner;
};

TEST_F(CoroutineCompiler, PassesATemporaryOfATypeWithAConstructorByValue) {
  auto body = []() -> Task<std::string> { co_return co_await byValue(Options(Counted(longText))); };
  EXPECT_EQ(runner.run(body()), longText);
}

TEST_F(CoroutineCompiler, PassesATemporaryOfATypeWithAConstructorByReference) {
  auto body = []() -> Task<std::string> {
    std::string text = co_await byReference(Options(Counted(longText)));
    co_return text;
  };
  EXPECT_EQ(runner.run(body()), longText);
}

TEST_F(CoroutineCompiler, PassesANamedLocalThatIsMoved) {
  auto body = []() -> Task<std::string> {
    Options options(Counted{longText});
    co_return co_await byValue(std::move(options));
  };
  EXPECT_EQ(runner.run(body()), longText);
}

TEST_F(CoroutineCompiler, PassesANamedClosureThatIsMoved) {
  auto body = []() -> Task<std::string> {
    const Counted owned(longText);
    auto closure = [owned] { return owned.text(); };
    co_return co_await call(std::move(closure));
  };
  EXPECT_EQ(runner.run(body()), longText);
}

TEST_F(CoroutineCompiler, StartsInOneStatementAndAwaitsInTheNext) {
  auto body = []() -> Task<std::string> {
    const Counted owned(longText);
    auto task = call([owned] { return owned.text(); });
    co_return co_await std::move(task);
  };
  EXPECT_EQ(runner.run(body()), longText);
}

TEST_F(CoroutineCompiler, RunsANamedCoroutineClosureThatOutlivesItsTask) {
  auto body = []() -> Task<std::string> {
    const Counted owned(longText);
    const auto closure = [owned]() -> Task<std::string> { co_return owned.text(); };
    auto task = closure();
    co_return co_await std::move(task);
  };
  EXPECT_EQ(runner.run(body()), longText);
}

TEST_F(CoroutineCompiler, ChoosesBetweenAwaitAndValueByIfAndElse) {
  auto body = [](bool awaited) -> Task<std::string> {
    if (awaited) {
      const Counted made = co_await make();
      co_return made.text();
    }
    co_return "not awaited";
  };
  EXPECT_EQ(runner.run(body(true)), longText);
  EXPECT_EQ(runner.run(body(false)), "not awaited");
}

TEST_F(CoroutineCompiler, AwaitsIntoANamedLocalAndThenBuildsWithIt) {
  auto body = []() -> Task<std::string> {
    Counted made = co_await make();
    const Options options(std::move(made));
    co_return options.values.at(0).text();
  };
  EXPECT_EQ(runner.run(body()), longText);
}

TEST_F(CoroutineCompiler, CarriesValuesThroughOneShotsAndChannels) {
  auto body = []() -> Task<std::string> {
    OneShot<Counted> oneShot;
    oneShot.resume(Counted(longText));
    const Counted first = co_await oneShot.wait();
    auto [producer, events] = EventChannel<Counted>::make();
    producer.yield(first);
    producer.finish();
    std::string all;
    while (auto event = co_await events.next()) all += event->text();
    co_return all;
  };
  EXPECT_EQ(runner.run(body()), longText);
}

TEST_F(CoroutineCompiler, DestroysWhatAnExceptionOrANeverStartedTaskLeavesBehind) {
  auto body = []() -> Task<void> {
    const Counted kept(longText);
    auto never = byValue(Options(kept));
    auto failing = call([kept]() -> std::string { throw std::runtime_error(kept.text()); });
    co_await std::move(failing);
  };
  EXPECT_THROW(runner.run(body()), std::runtime_error);
}

template <typename Awaitable>
constexpr bool isNoAggregate = !std::is_aggregate_v<std::remove_cvref_t<Awaitable>>;

static_assert(isNoAggregate<Task<Counted>> && isNoAggregate<detail::TaskAwaiter<Counted>>);
static_assert(isNoAggregate<decltype(std::declval<OneShot<Counted>&>().wait())>);
static_assert(isNoAggregate<decltype(std::declval<EventChannel<Counted>&>().next())>);
static_assert(isNoAggregate<decltype(std::declval<Strand&>().enter())>);
static_assert(isNoAggregate<decltype(currentStopToken())>);
static_assert(isNoAggregate<TaskResult<Counted>> && isNoAggregate<ChannelLimit> && isNoAggregate<Timer>);

}  // namespace
}  // namespace ormel
