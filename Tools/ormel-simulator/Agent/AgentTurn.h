#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ormel-simulator/Agent/AgentThread.h"
#include "ormel-simulator/Requests/AgentClient.h"

namespace ormel::simulator {

/// A turn that is under way: steps, one after the other, each after a pause, and at times a question to the client
/// that the next step waits for. A script adds the steps; a step that adds steps has them done before the others.
///
/// It refers to itself in its steps, and so stays where it is.
class AgentTurn {
 public:
  using Clock = std::chrono::steady_clock;
  using Action = std::function<void()>;

  /// `outputSchema` is null where the final message is free. The turn is entered in the thread.
  AgentTurn(AgentClient& client, AgentThread& thread, std::string id, milliseconds pace, JSONValue outputSchema);
  AgentTurn(const AgentTurn&) = delete;
  AgentTurn& operator=(const AgentTurn&) = delete;
  ~AgentTurn();

  // For the scripts.

  AgentThread& thread() noexcept { return thread_; }
  const std::string& id() const noexcept { return id_; }
  milliseconds pace() const noexcept { return pace_; }
  std::string prompt() const { return record().prompt().value_or(""); }

  /// The user's prompts in earlier turns of the thread, since its history was shortened.
  std::vector<std::string> earlierPrompts() const;

  void then(Action action) { thenAfter(pace_, std::move(action)); }
  void thenAfter(milliseconds pause, Action action) { added_.push_back({pause, std::move(action)}); }

  /// Sends a notification about this turn.
  void notify(const std::string& method, JSONObjectBuilder members);

  /// Asks the client. The turn goes on when it has answered; the handler gets nothing if the client refused.
  void ask(const std::string& method, JSONObjectBuilder members, AgentClient::AnswerHandler handler);

  /// An id that no other item of the thread has.
  std::string newItemID(std::string_view kind);

  void startItem(const JSONObjectBuilder& item);
  void completeItem(const JSONObjectBuilder& item);

  /// Adds the steps of the final message, word by word: the text, or, if the client wants it, a JSON object instead.
  void say(const std::string& text);

  /// Adds the steps of a final message that is a JSON object, made by the schema if there is one.
  void sayJSON();

  /// Adds the steps of a message that never ends: `next` gives its pieces.
  void sayForever(milliseconds pause, std::function<std::string()> next);

  /// The output that the client is given without pause: lines that are complete already.
  void write(std::string_view lines) { client_.write(lines); }

  /// Ends the turn; what steps it still had are dropped. The client is told by `announceEnd`.
  void finish(const std::string& status, const std::optional<std::string>& errorMessage = std::nullopt);

  /// Ends the whole program, after that text on standard error.
  void crash(const std::string& text, int exitStatus);

  // For the agent.

  bool ended() const noexcept { return ended_; }
  std::optional<int> crashStatus() const noexcept { return crashStatus_; }

  /// Takes over what a script added outside of a step.
  void scheduleAdded();

  /// When the next step is due; nothing while the turn waits for the client.
  std::optional<Clock::time_point> due() const;

  /// Does the next step, or ends the turn if there is none.
  void advance();

  /// Tells the client that the turn has ended.
  void announceEnd();

  void steer(const std::string& text) { steering_.push_back(text); }
  void interrupt();

 private:
  struct Step {
    milliseconds pause;
    Action action;
  };
  struct Message;

  // It stays the last one: of a thread, a process plays one turn at a time, and turns that others add go before it.
  AgentTurnRecord& record() { return thread_.turns.back(); }
  const AgentTurnRecord& record() const { return thread_.turns.back(); }

  void endQuestion();
  Message startMessage();
  void sayPiece(Message& message, const std::string& piece);
  void completeMessage(Message& message);
  std::string takeSteering();
  void reportUsage();

  AgentClient& client_;
  AgentThread& thread_;
  /// The turn's number among the turns of the thread, from 1.
  std::size_t number_;
  std::string id_;
  milliseconds pace_;
  JSONValue outputSchema_;
  std::deque<Step> steps_;
  std::deque<Step> added_;
  Clock::time_point lastStep_ = Clock::now();
  std::optional<int> outstanding_;
  std::vector<std::string> steering_;
  std::size_t items_ = 0;
  std::size_t bytesSaid_ = 0;
  bool ended_ = false;
  std::optional<int> crashStatus_;
};

}  // namespace ormel::simulator
