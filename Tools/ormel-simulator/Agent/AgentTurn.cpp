#include "ormel-simulator/Agent/AgentTurn.h"

#include <cmath>
#include <iterator>
#include <memory>
#include <utility>

#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Agent/SchemaExample.h"

namespace ormel::simulator {

namespace {

constexpr int modelContextWindow = 128'000;

double millisecondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<double>(std::chrono::duration_cast<milliseconds>(now).count());
}

// About as many as a model would count.
double tokensOf(std::size_t bytes) { return std::ceil(static_cast<double>(bytes) / 4); }

}  // namespace

/// A message of the agent that is being said.
struct AgentTurn::Message {
  std::string id;
  std::string text;

  JSONObjectBuilder item() const {
    JSONObjectBuilder members;
    members.set("type", "agentMessage").set("id", id).set("text", text).set("phase", "final_answer");
    return members;
  }
};

AgentTurn::AgentTurn(AgentClient& client, AgentThread& thread, std::string id, milliseconds pace,
                     JSONValue outputSchema)
    : client_(client),
      thread_(thread),
      number_(thread.turns.size() + 1),
      id_(std::move(id)),
      pace_(pace),
      outputSchema_(std::move(outputSchema)) {
  AgentTurnRecord turn;
  turn.id = id_;
  thread_.turns.push_back(std::move(turn));
}

AgentTurn::~AgentTurn() {
  if (outstanding_) client_.withdraw(*outstanding_);
}

std::vector<std::string> AgentTurn::earlierPrompts() const {
  std::vector<std::string> prompts;
  for (const AgentTurnRecord& turn : thread_.turns) {
    if (&turn == &record()) break;
    if (turn.hasItem("contextCompaction")) prompts.clear();
    if (auto prompt = turn.prompt()) prompts.push_back(std::move(*prompt));
  }
  return prompts;
}

void AgentTurn::notify(const std::string& method, JSONObjectBuilder members) {
  client_.notify(method, members.set("threadId", thread_.id).set("turnId", id_).build());
}

void AgentTurn::ask(const std::string& method, JSONObjectBuilder members, AgentClient::AnswerHandler handler) {
  members.set("threadId", thread_.id).set("turnId", id_);
  outstanding_ = client_.ask(method, members.build(), [this, handler = std::move(handler)](const auto& result) {
    endQuestion();
    handler(result);
    if (!ended_) scheduleAdded();
  });
}

void AgentTurn::endQuestion() {
  client_.notify("serverRequest/resolved", JSONValue::object({{"threadId", thread_.id}, {"requestId", *outstanding_}}));
  outstanding_.reset();
  lastStep_ = Clock::now();
}

std::string AgentTurn::newItemID(std::string_view kind) {
  return std::string(kind) + "-" + std::to_string(number_) + "-" + std::to_string(++items_);
}

void AgentTurn::startItem(const JSONObjectBuilder& item) {
  JSONObjectBuilder members;
  notify("item/started", members.set("item", item.build()).set("startedAtMs", millisecondsNow()));
}

void AgentTurn::completeItem(const JSONObjectBuilder& item) {
  record().items.push_back(item.build());
  JSONObjectBuilder members;
  notify("item/completed", members.set("item", record().items.back()).set("completedAtMs", millisecondsNow()));
}

AgentTurn::Message AgentTurn::startMessage() {
  Message message{newItemID("message"), {}};
  startItem(message.item());
  return message;
}

void AgentTurn::sayPiece(Message& message, const std::string& piece) {
  message.text += piece;
  JSONObjectBuilder members;
  notify("item/agentMessage/delta", members.set("itemId", message.id).set("delta", piece));
}

void AgentTurn::completeMessage(Message& message) {
  bytesSaid_ += message.text.size();
  completeItem(message.item());
}

void AgentTurn::say(const std::string& text) {
  if (!outputSchema_.isNull()) return sayJSON();
  const auto message = std::make_shared<Message>();
  then([this, message] { *message = startMessage(); });
  for (const std::string& piece : wordPieces(text)) {
    then([this, message, piece] {
      if (!steering_.empty() && !message->text.empty()) sayPiece(*message, takeSteering());
      sayPiece(*message, piece);
    });
  }
  then([this, message] {
    if (!steering_.empty()) sayPiece(*message, takeSteering());
    completeMessage(*message);
  });
}

void AgentTurn::sayJSON() {
  then([this] {
    const std::string steering = steering_.empty() ? "" : takeSteering();
    const std::string text = jsonAnswer(outputSchema_, prompt() + steering).encode();
    const auto message = std::make_shared<Message>(startMessage());
    for (const std::string& piece : wordPieces(text)) {
      then([this, message, piece] { sayPiece(*message, piece); });
    }
    then([this, message] { completeMessage(*message); });
  });
}

void AgentTurn::sayForever(milliseconds pause, std::function<std::string()> next) {
  const auto message = std::make_shared<Message>(startMessage());
  // Each piece adds the step of the next one.
  struct Endless {
    AgentTurn& turn;
    std::shared_ptr<Message> message;
    milliseconds pause;
    std::function<std::string()> next;

    void operator()() const {
      turn.sayPiece(*message, turn.steering_.empty() ? next() : turn.takeSteering());
      turn.thenAfter(pause, *this);
    }
  };
  Endless{*this, message, pause, std::move(next)}();
}

std::string AgentTurn::takeSteering() {
  std::string text;
  for (const std::string& words : std::exchange(steering_, {})) text += " (You add: \"" + words + "\". I do so.)";
  return text;
}

void AgentTurn::finish(const std::string& status, const std::optional<std::string>& errorMessage) {
  reportUsage();
  record().status = status;
  record().errorMessage = errorMessage;
  record().completedAt = secondsNow();
  ended_ = true;
}

void AgentTurn::announceEnd() {
  JSONObjectBuilder members;
  notify("turn/completed", members.set("turn", record().json(ItemsView::notLoaded)));
}

void AgentTurn::reportUsage() {
  std::size_t earlier = 0;
  for (const std::string& prompt : earlierPrompts()) earlier += prompt.size();
  const TokenCount last{tokensOf(earlier + prompt().size()) + 8, tokensOf(earlier), tokensOf(bytesSaid_) + 2};
  record().tokens = last;
  JSONObjectBuilder members;
  notify("thread/tokenUsage/updated",
         members.set("tokenUsage", JSONValue::object({{"last", last.json()},
                                                      {"total", thread_.tokens().json()},
                                                      {"modelContextWindow", modelContextWindow}})));
}

void AgentTurn::crash(const std::string& text, int exitStatus) {
  client_.writeError(text);
  crashStatus_ = exitStatus;
}

void AgentTurn::scheduleAdded() {
  steps_.insert(steps_.begin(), std::make_move_iterator(added_.begin()), std::make_move_iterator(added_.end()));
  added_.clear();
}

std::optional<AgentTurn::Clock::time_point> AgentTurn::due() const {
  if (outstanding_) return std::nullopt;
  return steps_.empty() ? lastStep_ : lastStep_ + steps_.front().pause;
}

void AgentTurn::advance() {
  if (steps_.empty() && steering_.empty()) return finish("completed");
  if (steps_.empty()) {
    say("I was done, but I take that into account too.");
  } else {
    const Action action = std::move(steps_.front().action);
    steps_.pop_front();
    action();
  }
  lastStep_ = Clock::now();
  if (!ended_) scheduleAdded();
}

void AgentTurn::interrupt() {
  if (outstanding_) {
    client_.withdraw(*outstanding_);
    endQuestion();
  }
  steps_.clear();
  steering_.clear();
  thenAfter(milliseconds(0), [this] { finish("interrupted"); });
  scheduleAdded();
}

}  // namespace ormel::simulator
