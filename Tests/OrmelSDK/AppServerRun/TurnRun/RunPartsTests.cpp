#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/RunFailure.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRecovery.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunTransport.h"
#include "OrmelSDK/AppServerRun/TurnRun/StreamCompletion.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/RunTranscript.h"

namespace {

using namespace ormel;
using namespace ormel::detail;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;

ThreadEvent warningEvent(std::string message) { return ThreadWarningEvent{std::nullopt, std::move(message)}; }

StreamCompletion broken() { return StreamCompletion::failed({"broken", false}); }

std::string inWordsOrNone(const std::exception_ptr& error) { return error ? inWords(error) : "none"; }

/// A channel whose producer is given to a stream.
struct Consumer {
  std::pair<EventProducer<ThreadEvent>, EventChannel<ThreadEvent>> ends = EventChannel<ThreadEvent>::make();

  std::vector<std::string> told() { return Simulated().run(toldBy(std::move(ends.second))); }
};

TEST(StreamCompletion, TellsConsumersWaitersAndSendersTheirOwn) {
  struct Case {
    StreamCompletion completion;
    const char* stream;
    const char* waiter;
    const char* sender;
  };
  const Case cases[] = {
      {StreamCompletion(), "none", "none", "none"},
      {StreamCompletion::finished(), "none", "stream error: Stream finished",
       "stream error: Ormel app-server stream already finished"},
      {broken(), "stream error: broken", "stream error: broken", "stream error: broken"},
      {StreamCompletion::failed({"whatever", true}), "aborted", "aborted", "aborted"},
      {StreamCompletion::aborted(), "aborted", "aborted", "aborted"},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(inWordsOrNone(test.completion.streamError()), test.stream);
    EXPECT_EQ(inWordsOrNone(test.completion.waiterError()), test.waiter);
    EXPECT_EQ(inWordsOrNone(test.completion.senderError()), test.sender);
  }
}

TEST(RunFailure, CountsCancellationAndAbortAsWanted) {
  EXPECT_TRUE(isAbortError(CancelledError()));
  EXPECT_TRUE(isAbortError(OrmelProcessError::aborted()));
  EXPECT_FALSE(isAbortError(OrmelProcessError::spawnFailed("x")));
  EXPECT_FALSE(isAbortError(ThreadRunError::streamError("Operation aborted")));
  EXPECT_FALSE(isAbortError(std::runtime_error("x")));
}

TEST(RunFailure, DescribesAnyFailure) {
  const RunFailure ofStream = describedFailure(std::make_exception_ptr(ThreadRunError::streamError("a")));
  EXPECT_EQ(ofStream.message, "a");
  EXPECT_FALSE(ofStream.aborted);
  const RunFailure abort = describedFailure(std::make_exception_ptr(OrmelProcessError::aborted()));
  EXPECT_EQ(abort.message, "Operation aborted");
  EXPECT_TRUE(abort.aborted);
  EXPECT_EQ(describedFailure(std::make_exception_ptr(std::runtime_error("b"))).message, "b");
  const RunFailure foreign = describedFailure(std::make_exception_ptr(7));
  EXPECT_FALSE(foreign.message.empty());
  EXPECT_FALSE(foreign.aborted);
}

TEST(RunStream, CountsOperationsFromOne) {
  RunStream stream;
  EXPECT_TRUE(stream.isPending());
  EXPECT_FALSE(stream.currentOperationGeneration());
  EXPECT_EQ(stream.begin(), 1U);
  EXPECT_EQ(stream.currentOperationGeneration(), 1U);
  EXPECT_EQ(failureOf([&] { stream.requireNoOperation(); }), "stream error: An app-server operation is already active");
  stream.close(StreamCompletion::finished(), 1);
  stream.requireNoOperation();
  stream.reset();
  EXPECT_EQ(stream.begin(), 2U);
}

TEST(RunStream, KeepsEventsUntilAProducerIsThere) {
  RunStream stream;
  const auto generation = stream.begin();
  stream.emit(warningEvent("a"));
  stream.emit(warningEvent("b"));
  Consumer consumer;
  stream.attach(std::move(consumer.ends.first), generation);
  stream.emit(warningEvent("c"));
  stream.close(StreamCompletion::finished(), generation);
  stream.endChannel();
  stream.emit(warningEvent("late"));
  EXPECT_THAT(consumer.told(), ElementsAre("warning a", "warning b", "warning c", "end"));
}

TEST(RunStream, SendsWhatWasGatheredTogether) {
  RunStream stream;
  const auto generation = stream.begin();
  Consumer consumer;
  stream.attach(consumer.ends.first, generation);
  {
    const RunStream::EmissionBatch gathering(stream);
    stream.emit(warningEvent("a"));
    stream.emit(warningEvent("b"));
    EXPECT_FALSE(consumer.ends.second.isReady());
  }
  EXPECT_TRUE(consumer.ends.second.isReady());
  {
    RunStream::EmissionBatch gathering(stream);
    stream.emit(warningEvent("c"));
    gathering.end();
    stream.emit(warningEvent("d"));
    stream.close(StreamCompletion::finished(), generation);
    stream.endChannel();
  }
  EXPECT_THAT(consumer.told(), ElementsAre("warning a", "warning b", "warning c", "warning d", "end"));
}

TEST(RunStream, DoesNotGatherForLong) {
  RunStream stream;
  const auto generation = stream.begin();
  Consumer consumer;
  stream.attach(consumer.ends.first, generation);
  const RunStream::EmissionBatch gathering(stream);
  int emitted = 0;
  for (; emitted < 1000 && !consumer.ends.second.isReady(); ++emitted) stream.emit(warningEvent("w"));
  EXPECT_LT(emitted, 100);
}

TEST(RunStream, SendsWhatWasGatheredBeforeTheEndOfItsOperation) {
  RunStream stream;
  const auto generation = stream.begin();
  Consumer consumer;
  stream.attach(std::move(consumer.ends.first), generation);
  const RunStream::EmissionBatch gathering(stream);
  stream.emit(warningEvent("last"));
  stream.close(broken(), generation);
  stream.endChannel();
  EXPECT_THAT(consumer.told(), ElementsAre("warning last", "stream error: broken"));
}

TEST(RunStream, EndsTheChannelAsTheOperationEnds) {
  const std::pair<StreamCompletion, const char*> cases[] = {{StreamCompletion::finished(), "end"},
                                                            {broken(), "stream error: broken"},
                                                            {StreamCompletion::aborted(), "aborted"}};
  for (const auto& [completion, words] : cases) {
    RunStream stream;
    Consumer consumer;
    stream.attach(std::move(consumer.ends.first), stream.begin());
    stream.close(completion, 1);
    stream.endChannel();
    EXPECT_THAT(consumer.told(), ElementsAre(words));
  }
}

TEST(RunStream, RefusesAProducerOfAnotherOperation) {
  RunStream stream;
  Consumer early;
  stream.attach(std::move(early.ends.first), 1);
  EXPECT_THAT(early.told(), ElementsAre("stream error: Prepared app-server operation is no longer current"));
  stream.begin();
  stream.close(StreamCompletion::finished(), 1);
  Consumer late;
  stream.attach(std::move(late.ends.first), 1);
  EXPECT_THAT(late.told(), ElementsAre("stream error: Prepared app-server operation is no longer current"));
}

TEST(RunStream, TellsAnOperationThatEndedFromOneThatNeverWas) {
  RunStream stream;
  stream.begin();
  EXPECT_TRUE(stream.isCurrentOrElseEnded(1));
  stream.close(StreamCompletion::finished(), 1);
  EXPECT_FALSE(stream.isCurrentOrElseEnded(1));
  const std::string failure = "stream error: Prepared app-server operation is no longer current";
  EXPECT_EQ(failureOf([&] { static_cast<void>(stream.isCurrentOrElseEnded(0)); }), failure);
  EXPECT_EQ(failureOf([&] { static_cast<void>(stream.isCurrentOrElseEnded(2)); }), failure);
  EXPECT_EQ(failureOf([&] { stream.requireCurrent(1); }), failure);
  stream.reset();
  stream.begin();
  EXPECT_FALSE(stream.isCurrentOrElseEnded(1));
  stream.close(broken(), std::nullopt);
  EXPECT_EQ(failureOf([&] { static_cast<void>(stream.isCurrentOrElseEnded(2)); }), failure);
}

TEST(RunStream, NeverLowersItsHighWaterMark) {
  RunStream stream;
  stream.close(StreamCompletion::finished(), std::nullopt);
  EXPECT_EQ(stream.completedOperationGenerationHighWaterMark(), 0U);
  stream.reset();
  stream.begin();
  stream.close(broken(), 1);
  stream.reset();
  stream.begin();
  stream.close(broken(), std::nullopt);
  EXPECT_EQ(stream.completedOperationGenerationHighWaterMark(), 1U);
}

/// A request whose outcome can be seen.
struct Requested {
  OneShot<JSONValue> response;

  PendingResponse pending(bool survives = false) const { return {response.resolver(), Timer(), survives}; }

  std::string outcome() const {
    if (!response.isComplete()) return "waiting";
    std::string words;
    const std::string failure = failureOf([&] { words = Simulated().run(taken()).encode(); });
    return words.empty() ? failure : words;
  }

 private:
  Task<JSONValue> taken() const { co_return co_await response.wait(); }
};

TEST(RunRequests, AreEndedByWhoeverFindsThem) {
  RunRequests requests;
  const AppServerRequestID id = requests.takeID();
  EXPECT_EQ(id, AppServerRequestID::integer(1));
  EXPECT_EQ(requests.takeID(), AppServerRequestID::integer(2));
  const Requested first;
  requests.add(id, first.pending());
  EXPECT_EQ(requests.count(), 1U);
  requests.complete(id, JSONValue("yes"));
  requests.complete(id, JSONValue("again"));
  requests.fail(id, std::make_exception_ptr(CancelledError()));
  EXPECT_FALSE(requests.remove(id));
  EXPECT_EQ(requests.count(), 0U);
  EXPECT_EQ(first.outcome(), "\"yes\"");
}

TEST(RunRequestsDeathTest, EndTheProcessWhenARequestIsEndedTwice) {
  using End = void (*)(RunRequests&, const AppServerRequestID&);
  const End ends[] = {
      [](RunRequests& requests, const AppServerRequestID& id) { requests.complete(id, JSONValue("again")); },
      [](RunRequests& requests, const AppServerRequestID& id) {
        requests.fail(id, std::make_exception_ptr(CancelledError()));
      },
      [](RunRequests& requests, const AppServerRequestID&) { requests.release(broken()); },
  };
  for (const End end : ends) {
    RunRequests requests;
    const Requested request;
    const AppServerRequestID first = requests.takeID();
    const AppServerRequestID second = requests.takeID();
    requests.add(first, request.pending());
    requests.add(second, request.pending());
    requests.complete(first, JSONValue("yes"));
    EXPECT_DEATH(end(requests, second), "Fatal error: .*ended twice");
  }
}

TEST(RunRequests, KeepTheirTimerQuietOnceTheyHaveEnded) {
  SimulatedScheduler scheduler(1);
  RunRequests requests;
  const AppServerRequestID id = requests.takeID();
  const Requested request;
  bool fired = false;
  PendingResponse pending = request.pending();
  pending.timeoutTask = scheduler.postAfter(1s, [&fired] { fired = true; });
  requests.add(id, std::move(pending));
  requests.fail(id, std::make_exception_ptr(CancelledError()));
  scheduler.run();
  EXPECT_FALSE(fired);
  EXPECT_EQ(request.outcome(), "cancelled");
}

TEST(RunRequests, AreReleasedByAnEndSaveForThoseThatOutliveANormalOne) {
  struct Case {
    StreamCompletion completion;
    const char* ordinary;
    const char* surviving;
  };
  const Case cases[] = {
      {StreamCompletion::finished(), "stream error: Stream finished", "waiting"},
      {broken(), "stream error: broken", "stream error: broken"},
      {StreamCompletion::aborted(), "aborted", "aborted"},
  };
  for (const Case& test : cases) {
    RunRequests requests;
    const Requested ordinary;
    const Requested surviving;
    requests.add(requests.takeID(), ordinary.pending());
    requests.add(requests.takeID(), surviving.pending(true));
    requests.release(test.completion);
    EXPECT_EQ(ordinary.outcome(), test.ordinary);
    EXPECT_EQ(surviving.outcome(), test.surviving);
  }
}

TEST(RunRecovery, KeepsOneTimerOfAKind) {
  SimulatedScheduler scheduler(1);
  RunRecovery recovery;
  std::vector<std::string> fired;
  const auto timer = [&](const char* name) {
    return scheduler.postAfter(1s, [&fired, name] { fired.emplace_back(name); });
  };
  recovery.armLivenessProbe(timer("probe 1"));
  recovery.armLivenessProbe(timer("probe 2"));
  recovery.armInterruptGrace(timer("grace 1"));
  recovery.armInterruptGrace(timer("grace 2"));
  scheduler.run();
  EXPECT_THAT(fired, ::testing::UnorderedElementsAre("probe 2", "grace 2"));
}

TEST(RunRecovery, CancelsWhatItKeeps) {
  SimulatedScheduler scheduler(1);
  RunRecovery recovery;
  bool fired = false;
  recovery.armLivenessProbe(scheduler.postAfter(1s, [&fired] { fired = true; }));
  recovery.armInterruptGrace(scheduler.postAfter(1s, [&fired] { fired = true; }));
  const std::stop_token reconciliation = recovery.beginReconciliation();
  recovery.cancel();
  scheduler.run();
  EXPECT_FALSE(fired);
  EXPECT_TRUE(reconciliation.stop_requested());
}

TEST(RunRecovery, ForgetsAReconciliationWithoutCancellingIt) {
  RunRecovery recovery;
  const std::stop_token reconciliation = recovery.beginReconciliation();
  recovery.forgetReconciliation();
  recovery.cancel();
  EXPECT_FALSE(reconciliation.stop_requested());
}

TEST(RunTransport, CannotWriteWithoutAProcess) {
  RunTransport transport;
  EXPECT_EQ(failureOf([&] { transport.writePayload(JSONValue::object({})); }),
            "stream error: Ormel app-server stdin is unavailable");
  EXPECT_EQ(transport.errorText(), "");
  EXPECT_FALSE(transport.outputHasEnded());
}

TEST(RunTransport, KeepsItsGenerationWhenThereIsNothingToShutDown) {
  RunTransport transport;
  transport.shutdown();
  EXPECT_EQ(transport.generation(), 0U);
  EXPECT_EQ(transport.nextGeneration(), 1U);
}

}  // namespace
