#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ormel-simulator/Scenario/Conversation.h"
#include "ormel-simulator/Scenario/Recorder.h"
#include "ormel-simulator/Scenario/Scenario.h"
#include "ormel-simulator/Scenario/Wire.h"

namespace ormel::simulator {

/// The client did not do what the scenario expects, or a stream failed.
struct FailedExpectation : Error {
  FailedExpectation(const Scenario& scenario, const Statement* statement, const std::string& receivedText,
                    const std::string& reasonText);

  /// 0 for what came after the last statement.
  std::size_t line;
  std::string expected;
  std::string received;
  std::string reason;
};

/// Plays one scenario. Single-threaded: it reads when it expects something or waits.
class Player {
 public:
  Player(const Scenario& scenario, Wire& wire, Recorder& recorder);

  /// Plays to the end and tells how the process is to end. Fails with `FailedExpectation`, or with
  /// `ScenarioError` where only playing shows that the scenario is wrong.
  Exit play();

 private:
  using Clock = std::chrono::steady_clock;
  using Ending = std::optional<Exit>;

  Ending playBlock(const Block& block);
  Ending playStatement(const Statement& statement);

  Ending playAction(const Expect& action);
  Ending playAction(const ExpectInAnyOrder& action);
  Ending playAction(const Answer& action);
  Ending playAction(const Notify& action);
  Ending playAction(const Ask& action);
  Ending playAction(const SendMessage& action);
  Ending playAction(const WriteRaw& action);
  Ending playAction(const Flood& action);
  Ending playAction(const CloseStream& action);
  Ending playAction(const IgnoreSignal& action);
  Ending playAction(const SetReading& action);
  Ending playAction(const Exit& action);
  Ending playAction(const Fork& action);
  Ending playAction(const Wait& action);
  Ending playAction(const Repeat& action);
  Ending playAction(const InOneWrite& action);
  Ending playAction(const InRun& action);
  Ending playAction(const Always& action);
  Ending playAction(const SetPatience& action);
  Ending playAction(const SetTimeLimit& action);

  void expectAll(std::vector<const Expectation*> remaining);
  void expectEndOfInput();
  std::optional<Message> nextMessage();
  std::optional<std::string> acceptMessage(const Message& message, std::vector<const Expectation*>& remaining);
  bool applyAlways(const Message& message);
  void collectLines();
  bool isOver(const Wait& wait, Clock::time_point start);
  void servePending();
  void recordSignals();
  void checkTimeLimit() const;
  void playEnd();

  void send(const JSONValue& message);
  void write(Stream stream, std::string_view bytes);
  void setTimeLimit(milliseconds duration);
  std::string filePath(const std::string& name) const;

  [[noreturn]] void fail(const std::string& received, const std::string& reason) const;
  [[noreturn]] void failScenario(const std::string& text) const;

  const Scenario& scenario_;
  Wire& wire_;
  Recorder& recorder_;
  Conversation conversation_;
  std::vector<Always> always_;
  std::deque<Message> pending_;
  std::map<int, int> recordedSignals_;
  std::map<int, int> awaitedSignals_;
  const Statement* current_ = nullptr;
  bool reading_ = true;
  bool endRecorded_ = false;
  milliseconds patience_{30'000};
  milliseconds timeLimit_{120'000};
  Clock::time_point start_ = Clock::now();
};

}  // namespace ormel::simulator
