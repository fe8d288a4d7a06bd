#include "ormel-simulator/Scenario/Player.h"

#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <thread>

#include "ormel-simulator/Scenario/Signals.h"

namespace ormel::simulator {

namespace {

// Short enough that signals and files are noticed soon, long enough to cost nothing.
constexpr milliseconds glance{5};

// How long the pieces of a raw write wait for a client that does not read.
constexpr milliseconds pieceWait{5000};

// A forked child holds other processes' pipes, so it never stays longer than this.
constexpr milliseconds longestFork{30'000};

constexpr std::size_t longestReportedLine = 2000;

std::string shortened(const std::string& text) {
  if (text.size() <= longestReportedLine) return text;
  return text.substr(0, longestReportedLine) + "... (" + std::to_string(text.size()) + " bytes)";
}

std::string failureText(const Scenario& scenario, const Statement* statement, const std::string& received,
                        const std::string& reason) {
  std::string place = scenario.fileName;
  if (statement) place += ":" + std::to_string(statement->place.line);
  const std::string expected = statement ? statement->text : "nothing after the end of the scenario";
  return place + ": the scenario does not go on as written\n  expected: " + expected +
         "\n  received: " + shortened(received) + "\n  because:  " + reason;
}

std::string repeated(const std::string& text, std::size_t times) {
  std::string result;
  result.reserve(text.size() * times);
  for (std::size_t index = 0; index < times; ++index) result += text;
  return result;
}

// A little later than the limit, which is also noticed between reads, with a message.
void setAlarm(milliseconds limit) {
  const auto time = std::chrono::duration_cast<std::chrono::microseconds>(limit + milliseconds(250));
  constexpr std::chrono::microseconds::rep microsecondsPerSecond = 1'000'000;
  itimerval timer = {};
  timer.it_value.tv_sec = static_cast<time_t>(time.count() / microsecondsPerSecond);
  timer.it_value.tv_usec = static_cast<suseconds_t>(time.count() % microsecondsPerSecond);
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

FailedExpectation::FailedExpectation(const Scenario& scenario, const Statement* statement,
                                     const std::string& receivedText, const std::string& reasonText)
    : Error(failureText(scenario, statement, receivedText, reasonText)),
      line(statement ? statement->place.line : 0),
      expected(statement ? statement->text : ""),
      received(receivedText),
      reason(reasonText) {}

Player::Player(const Scenario& scenario, Wire& wire, Recorder& recorder)
    : scenario_(scenario), wire_(wire), recorder_(recorder) {
  setTimeLimit(timeLimit_);
}

Exit Player::play() {
  if (const Ending ending = playBlock(scenario_.statements)) return *ending;
  playEnd();
  return Exit{};
}

Player::Ending Player::playBlock(const Block& block) {
  for (const Statement& statement : block) {
    if (Ending ending = playStatement(statement)) return ending;
  }
  return std::nullopt;
}

Player::Ending Player::playStatement(const Statement& statement) {
  current_ = &statement;
  recordSignals();
  try {
    return std::visit([this](const auto& action) { return playAction(action); }, statement.action);
  } catch (const UnsetVariable& error) {
    failScenario(error.description());
  } catch (const EncodingError& error) {
    failScenario(error.description());
  } catch (const std::system_error& error) {
    fail("a failure of writing", error.code().message());
  }
}

Player::Ending Player::playAction(const Expect& action) {
  if (!reading_) failScenario("the server has stopped reading, so it can expect nothing");
  if (action.expectation.kind == Expectation::Kind::endOfInput) {
    expectEndOfInput();
  } else {
    expectAll({&action.expectation});
  }
  return std::nullopt;
}

Player::Ending Player::playAction(const ExpectInAnyOrder& action) {
  if (!reading_) failScenario("the server has stopped reading, so it can expect nothing");
  std::vector<const Expectation*> expectations;
  for (const Statement& statement : action.body) {
    expectations.push_back(&std::get<Expect>(statement.action).expectation);
  }
  expectAll(std::move(expectations));
  return std::nullopt;
}

Player::Ending Player::playAction(const Answer& action) {
  const auto id = conversation_.takeClientRequest(action.name);
  if (!id) {
    failScenario(action.name.empty() ? "no request of the client waits for an answer"
                                     : "the request \"" + action.name + "\" has not come so far");
  }
  JSONObjectBuilder message;
  message.set("id", *id).set(action.isError ? "error" : "result", conversation_.variables().filledIn(action.payload));
  send(message.build());
  return std::nullopt;
}

Player::Ending Player::playAction(const Notify& action) {
  JSONObjectBuilder message;
  message.set("method", action.method);
  if (action.params) message.set("params", conversation_.variables().filledIn(*action.params));
  send(message.build());
  return std::nullopt;
}

Player::Ending Player::playAction(const Ask& action) {
  const Variables& variables = conversation_.variables();
  JSONObjectBuilder message;
  message.set("method", action.method);
  if (action.params) message.set("params", variables.filledIn(*action.params));
  std::optional<JSONValue> id;
  if (action.id) id = variables.filledIn(*action.id);
  message.set("id", conversation_.noteServerRequest(action.name, id));
  send(message.build());
  if (!action.expecting) return std::nullopt;
  return playAction(Expect{*action.expecting});
}

Player::Ending Player::playAction(const SendMessage& action) {
  send(conversation_.variables().filledIn(action.message));
  return std::nullopt;
}

Player::Ending Player::playAction(const WriteRaw& action) {
  constexpr std::size_t blockSize = 65536;
  bool first = true;
  for (const Piece& piece : action.pieces) {
    if (!first) wire_.waitUntilTaken(action.stream, pieceWait);
    first = false;
    const std::string text = conversation_.variables().filledInText(piece.text);
    const std::size_t timesInBlock = std::max<std::size_t>(1, blockSize / std::max<std::size_t>(1, text.size()));
    for (std::size_t left = piece.times; left > 0;) {
      const std::size_t times = std::min(left, timesInBlock);
      write(action.stream, repeated(text, times));
      left -= times;
    }
  }
  return std::nullopt;
}

Player::Ending Player::playAction(const Flood& action) {
  constexpr std::size_t blockSize = 65536;
  const std::string line = "ormel-simulator floods this stream with lines of sixty-four bytes.";
  const std::string block = repeated(line.substr(0, 63) + "\n", blockSize / 64);
  for (std::size_t left = action.bytes; left > 0;) {
    const std::size_t count = std::min(left, blockSize);
    wire_.write(action.stream, std::string_view(block).substr(0, count));
    left -= count;
  }
  return std::nullopt;
}

Player::Ending Player::playAction(const CloseStream& action) {
  wire_.close(action.stream);
  return std::nullopt;
}

Player::Ending Player::playAction(const IgnoreSignal& action) {
  ignoreAndCount(action.signal);
  recordedSignals_.try_emplace(action.signal, 0);
  return std::nullopt;
}

Player::Ending Player::playAction(const SetReading& action) {
  reading_ = action.reading;
  return std::nullopt;
}

Player::Ending Player::playAction(const Exit& action) { return action; }

Player::Ending Player::playAction(const Fork& action) {
  const pid_t child = ::fork();
  if (child < 0) fail("a failure of forking", std::strerror(errno));
  if (child > 0) {
    JSONObjectBuilder members;
    recorder_.record("fork", members.set("child", child));
    return std::nullopt;
  }
  recorder_.closeOtherDescriptors();
  reading_ = false;
  start_ = Clock::now();
  setTimeLimit(std::min(timeLimit_, longestFork));
  return playBlock(action.body).value_or(Exit{});
}

Player::Ending Player::playAction(const Wait& action) {
  const auto start = Clock::now();
  while (!isOver(action, start)) {
    recordSignals();
    checkTimeLimit();
    if (!reading_) {
      std::this_thread::sleep_for(glance);
      continue;
    }
    wire_.pump(glance);
    collectLines();
    servePending();
  }
  return std::nullopt;
}

Player::Ending Player::playAction(const Repeat& action) {
  for (std::size_t index = 1; index <= action.times; ++index) {
    if (!action.name.empty()) conversation_.variables().set(action.name, index);
    if (Ending ending = playBlock(action.body)) return ending;
  }
  return std::nullopt;
}

Player::Ending Player::playAction(const InOneWrite& action) {
  wire_.beginBurst();
  Ending ending = playBlock(action.body);
  wire_.endBurst();
  return ending;
}

Player::Ending Player::playAction(const InRun& action) {
  const bool applies = recorder_.run() == action.run || (action.orLater && recorder_.run() > action.run);
  return applies ? playBlock(action.body) : std::nullopt;
}

Player::Ending Player::playAction(const Always& action) {
  always_.push_back(action);
  return std::nullopt;
}

Player::Ending Player::playAction(const SetPatience& action) {
  patience_ = action.duration;
  return std::nullopt;
}

Player::Ending Player::playAction(const SetTimeLimit& action) {
  setTimeLimit(action.duration);
  return std::nullopt;
}

void Player::expectAll(std::vector<const Expectation*> remaining) {
  while (!remaining.empty()) {
    const auto message = nextMessage();
    if (!message) fail("the end of the input", "the client closed the server's input");
    const auto difference = acceptMessage(*message, remaining);
    if (difference) fail(message->line, *difference);
  }
}

void Player::expectEndOfInput() {
  while (const auto message = nextMessage()) {
    if (!applyAlways(*message)) fail(message->line, "the client was to close the server's input");
  }
}

// Meets one of the expectations, or else a standing rule; otherwise tells what is different.
std::optional<std::string> Player::acceptMessage(const Message& message, std::vector<const Expectation*>& remaining) {
  std::optional<std::string> concernedDifference;
  std::optional<std::string> firstDifference;
  for (auto expectation = remaining.begin(); expectation != remaining.end(); ++expectation) {
    const Judgement judgement = conversation_.judge(**expectation, message);
    if (!judgement.difference) {
      if (message.kind == Message::Kind::request) conversation_.noteClientRequest((*expectation)->name, message.id);
      remaining.erase(expectation);
      return std::nullopt;
    }
    if (judgement.concerned && !concernedDifference) concernedDifference = judgement.difference;
    if (!firstDifference) firstDifference = judgement.difference;
  }
  if (concernedDifference) return concernedDifference;
  return applyAlways(message) ? std::nullopt : firstDifference;
}

// The next message to look at; nothing at the end of the input.
std::optional<Message> Player::nextMessage() {
  const auto start = Clock::now();
  while (pending_.empty()) {
    if (wire_.inputEnded()) return std::nullopt;
    if (Clock::now() - start >= patience_) {
      fail("nothing", "nothing came within " + std::to_string(patience_.count()) + " ms");
    }
    recordSignals();
    checkTimeLimit();
    wire_.pump(glance);
    collectLines();
  }
  Message message = std::move(pending_.front());
  pending_.pop_front();
  return message;
}

void Player::collectLines() {
  while (auto line = wire_.takeLine()) {
    recorder_.recordReceived(line->bytes, line->terminated);
    Message message = readMessage(std::move(line->bytes));
    if (!line->terminated) {
      message.kind = Message::Kind::malformed;
      message.whole.reset();
      message.fault = "the input ended inside of this line";
    }
    pending_.push_back(std::move(message));
  }
  if (wire_.inputEnded() && !endRecorded_) {
    endRecorded_ = true;
    recorder_.record("endOfInput");
  }
}

// The rule that was given last comes first.
bool Player::applyAlways(const Message& message) {
  for (auto rule = always_.rbegin(); rule != always_.rend(); ++rule) {
    if (conversation_.judge(rule->expectation, message).difference) continue;
    if (rule->answer) {
      conversation_.noteClientRequest("", message.id);
      playAction(*rule->answer);
    }
    return true;
  }
  return false;
}

void Player::servePending() {
  std::deque<Message> kept;
  for (Message& message : pending_) {
    if (!applyAlways(message)) kept.push_back(std::move(message));
  }
  pending_ = std::move(kept);
}

bool Player::isOver(const Wait& wait, Clock::time_point start) {
  switch (wait.until) {
    case Wait::Until::elapsed:
      return Clock::now() - start >= wait.duration;
    case Wait::Until::inputClosed:
      return reading_ ? wire_.inputEnded() : wire_.inputClosedUnread();
    case Wait::Until::fileExists:
      return ::access(filePath(wait.file).c_str(), F_OK) == 0;
    case Wait::Until::signalArrived: {
      int& awaited = awaitedSignals_[wait.signal];
      if (signalArrivals(wait.signal) <= awaited) return false;
      ++awaited;
      recordSignals();
      return true;
    }
    case Wait::Until::killed:
      break;
  }
  return false;
}

// Records the ignored signals that came since the last look.
void Player::recordSignals() {
  for (auto& [signal, recorded] : recordedSignals_) {
    int missed = signalArrivals(signal) - recorded;
    recorded += missed;
    for (; missed > 0; --missed) {
      JSONObjectBuilder members;
      recorder_.record("signal", members.set("name", signalName(signal)));
    }
  }
}

void Player::checkTimeLimit() const {
  if (Clock::now() - start_ >= timeLimit_) {
    fail("nothing", "the time limit of " + std::to_string(timeLimit_.count()) + " ms is over");
  }
}

// Stays until the client is done; only standing rules cover what still comes.
void Player::playEnd() {
  current_ = nullptr;
  while (reading_ ? !wire_.inputEnded() || !pending_.empty() : !wire_.inputClosedUnread()) {
    recordSignals();
    checkTimeLimit();
    if (!reading_) {
      std::this_thread::sleep_for(glance);
      continue;
    }
    servePending();
    if (!pending_.empty()) fail(pending_.front().line, "the scenario had come to its end");
    wire_.pump(glance);
    collectLines();
  }
}

void Player::send(const JSONValue& message) { write(Stream::output, message.encode() + "\n"); }

void Player::write(Stream stream, std::string_view bytes) {
  recorder_.recordSent(stream == Stream::output ? "stdout" : "stderr", bytes);
  wire_.write(stream, bytes);
}

void Player::setTimeLimit(milliseconds duration) {
  timeLimit_ = duration;
  // Ends also a write that blocks for good.
  setAlarm(duration);
}

std::string Player::filePath(const std::string& name) const {
  return (std::filesystem::path(scenario_.fileName).parent_path() / name).string();
}

void Player::fail(const std::string& received, const std::string& reason) const {
  throw FailedExpectation(scenario_, current_, received, reason);
}

void Player::failScenario(const std::string& text) const {
  throw ScenarioError(scenario_.fileName, current_ ? current_->place : SourcePlace{}, text);
}

}  // namespace ormel::simulator
