#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Options/AbortSignal.h"
#include "OrmelSDK/Thread.h"
#include "Support/SimulatedThread.h"

namespace ormel::testing {

inline TurnOptions optionsWith(std::optional<AbortSignal> signal) {
  TurnOptions options;
  options.signal = std::move(signal);
  return options;
}

/// One way to keep a thread busy.
struct ThreadOperation {
  const char* name;
  Task<StreamedTurn> (*start)(const Thread& thread, std::optional<AbortSignal> signal);
  /// The last request that starts it.
  const char* lastRequest;
  /// The thread that its turn belongs to.
  const char* turnThread;
  /// The refusal by a thread without a conversation; null if the operation is welcome.
  const char* refusal;
};

inline void PrintTo(const ThreadOperation& operation, std::ostream* stream) { *stream << operation.name; }

inline const std::vector<ThreadOperation>& threadOperations() {
  static const std::vector<ThreadOperation> operations = {
      {"Turn",
       [](const Thread& thread, std::optional<AbortSignal> signal) {
         return thread.runStreamed("hello", optionsWith(std::move(signal)));
       },
       "turn/start", "t1", nullptr},
      {"Review",
       [](const Thread& thread, std::optional<AbortSignal> signal) {
         return thread.startReviewStreamed(ReviewTarget::uncommittedChanges(), ReviewDelivery::inline_,
                                           std::move(signal));
       },
       "review/start", "r1", "Start the thread before requesting a review"},
      {"Compaction",
       [](const Thread& thread, std::optional<AbortSignal> signal) {
         return thread.compactStreamed(std::move(signal));
       },
       "thread/compact/start", "t1", "Start the thread before requesting compaction"},
      {"SideConversation",
       [](const Thread& thread, std::optional<AbortSignal> signal) {
         return thread.runSideConversationStreamed("by the way", "be brief", optionsWith(std::move(signal)));
       },
       "turn/start", "f1", "Start the main thread before opening a side conversation"},
  };
  return operations;
}

/// Has the server tell the beginning or the end of the operation's turn "u1".
inline void beginTurnOf(SimulatedThread& server, const ThreadOperation& operation) {
  server.notify("turn/started", R"({"threadId":")" + std::string(operation.turnThread) + R"(","turn":{"id":"u1"}})");
}
inline void completeTurnOf(SimulatedThread& server, const ThreadOperation& operation) {
  server.notify("turn/completed", R"({"threadId":")" + std::string(operation.turnThread) +
                                      R"(","turn":{"id":"u1","status":"completed"}})");
}

/// A test for each of them.
class ThreadOperationTest : public ::testing::TestWithParam<ThreadOperation> {
 protected:
  static Task<StreamedTurn> start(SimulatedThread& server, std::optional<AbortSignal> signal = std::nullopt) {
    return GetParam().start(*server.thread, std::move(signal));
  }
  static std::string name(const ::testing::TestParamInfo<ThreadOperation>& operation) { return operation.param.name; }
};

}  // namespace ormel::testing
