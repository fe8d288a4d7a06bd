#include "OrmelSDK/Handlers/AsyncHandler.h"

#include <gtest/gtest.h>

#include <chrono>
#include <coroutine>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/Concurrency/Sleep.h"

namespace {

using ormel::AsyncHandler;
using ormel::Task;

struct Question {
  std::string text;
  std::vector<int> numbers;
};

using Handler = AsyncHandler<std::string(Question)>;

const Question question{"what is the answer to this rather long question", {1, 2, 3}};

std::string answeredBy(const Handler& handler) { return handler(question).get(); }

Task<std::string> echoLater(const Question& asked) {
  co_await ormel::sleepFor(ormel::productionScheduler(), std::chrono::milliseconds(1));
  co_return asked.text;
}

TEST(AsyncHandler, TakesAPlainCallable) {
  EXPECT_EQ(answeredBy([](const Question& asked) { return asked.text; }), question.text);
  EXPECT_EQ(answeredBy([](Question asked) { return std::move(asked.text); }), question.text);
  EXPECT_EQ(answeredBy([](const Question&) { return "converted"; }), "converted");
  EXPECT_EQ(answeredBy(&Question::text), question.text);
}

TEST(AsyncHandler, TakesACallableThatReturnsATask) {
  EXPECT_EQ(answeredBy([](Question asked) -> Task<std::string> { co_return std::move(asked.text); }), question.text);
  EXPECT_EQ(answeredBy([](const Question&) -> Task<const char*> { co_return "converted"; }), "converted");
  EXPECT_EQ(answeredBy(echoLater), question.text);
}

TEST(AsyncHandler, TakesCallablesOfNoArgumentsAndOfNoResult) {
  const AsyncHandler<std::string()> token = [] { return "token"; };
  EXPECT_EQ(token().get(), "token");

  std::vector<std::string> seen;
  const AsyncHandler<void(std::string)> plain = [&](const std::string& text) { seen.push_back(text); };
  const AsyncHandler<void(std::string)> dropping = [&](std::string text) {
    seen.push_back(std::move(text));
    return seen.size();
  };
  const AsyncHandler<void(std::string)> later = [&](std::string text) -> Task<> {
    seen.push_back(std::move(text));
    co_return;
  };
  const AsyncHandler<void(std::string)> droppingLater = [&](std::string text) -> Task<int> {
    seen.push_back(std::move(text));
    co_return 1;
  };
  plain("a").get();
  dropping("b").get();
  later("c").get();
  droppingLater("d").get();
  EXPECT_EQ(seen, (std::vector<std::string>{"a", "b", "c", "d"}));
}

TEST(AsyncHandler, RefusesWhatDoesNotFitAtCompileTime) {
  static_assert(std::is_constructible_v<Handler, std::string (*)(Question)>);
  static_assert(std::is_constructible_v<Handler, std::function<std::string(const Question&)>>);
  static_assert(!std::is_constructible_v<Handler, std::string (*)(int)>);
  static_assert(!std::is_constructible_v<Handler, int (*)(Question)>);
  static_assert(!std::is_constructible_v<Handler, Task<int> (*)(Question)>);
  static_assert(!std::is_constructible_v<Handler, std::nullptr_t>);
  static_assert(!std::is_default_constructible_v<Handler>);
}

TEST(AsyncHandler, CallsNothingBeforeItsTaskIsStarted) {
  int calls = 0;
  const Handler plain = [&](const Question&) {
    ++calls;
    return "";
  };
  const Handler later = [&](const Question&) -> Task<std::string> {
    ++calls;
    return [](std::string text) -> Task<std::string> { co_return text; }("");
  };
  {
    const Task<std::string> first = plain(question);
    const Task<std::string> second = later(question);
  }
  EXPECT_EQ(calls, 0);
  answeredBy(plain);
  answeredBy(later);
  EXPECT_EQ(calls, 2);
}

TEST(AsyncHandler, PassesOnWhatTheCallableThrows) {
  const auto throwing = [](const Question&) -> std::string { throw std::runtime_error("plain"); };
  const auto throwingTask = [](const Question&) -> Task<std::string> {
    co_await std::suspend_never();
    throw std::runtime_error("task");
  };
  const auto throwingEarly = [](const Question&) -> Task<std::string> { throw std::runtime_error("early"); };
  for (const auto& [handler, text] : std::vector<std::pair<Handler, std::string>>{
           {throwing, "plain"}, {throwingTask, "task"}, {throwingEarly, "early"}}) {
    try {
      answeredBy(handler);
      ADD_FAILURE() << text;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), text);
    }
  }
}

TEST(AsyncHandler, SharesOneCallableWithItsCopies) {
  const Handler counting = [calls = std::make_unique<int>(0)](const Question&) mutable {
    return std::to_string(++*calls);
  };
  const Handler copy = counting;
  Handler moved = copy;
  const Handler target = std::move(moved);
  EXPECT_EQ(answeredBy(counting), "1");
  EXPECT_EQ(answeredBy(copy), "2");
  EXPECT_EQ(answeredBy(target), "3");
  EXPECT_EQ(answeredBy(moved), "4");
}

TEST(AsyncHandler, IsReplacedByAssignment) {
  std::optional<Handler> handler = [](const Question&) { return "old"; };
  const Handler old = *handler;
  handler = [](const Question&) { return "new"; };
  EXPECT_EQ(answeredBy(*handler), "new");
  EXPECT_EQ(answeredBy(old), "old");
}

TEST(AsyncHandler, KeepsCallableAndArgumentsUntilTheTaskHasEnded) {
  ormel::SimulatedScheduler scheduler(1);
  std::optional<Handler> handler =
      [&scheduler, prefix = std::string("the question was: ")](const Question& asked) -> Task<std::string> {
    co_await ormel::sleepFor(scheduler, std::chrono::seconds(1));
    co_return prefix + asked.text;
  };
  std::string answer;
  {
    Question asked = question;
    (*handler)(std::move(asked)).onScheduler(scheduler).start([&](ormel::TaskResult<std::string> result) {
      answer = result.take();
    });
  }
  handler.reset();
  scheduler.run();
  EXPECT_EQ(answer, "the question was: " + question.text);
}

TEST(AsyncHandler, IsAwaitedLikeAnyTask) {
  const Handler plain = [](const Question& asked) { return asked.text; };
  const Handler later = echoLater;
  const auto both = [&]() -> Task<std::string> {
    Question first = question;
    std::string answers = co_await plain(std::move(first));
    Question second = question;
    answers += co_await later(std::move(second));
    co_return answers;
  };
  EXPECT_EQ(both().get(), question.text + question.text);
}

TEST(AsyncHandler, HandsItsStopTokenToTheCallable) {
  const AsyncHandler<bool()> handler = []() -> Task<bool> {
    const std::stop_token token = co_await ormel::currentStopToken();
    co_return token.stop_requested();
  };
  std::stop_source source;
  source.request_stop();
  EXPECT_TRUE(handler().withStopToken(source.get_token()).get());
  EXPECT_FALSE(handler().get());
}

}  // namespace
