#include "ormel-simulator/Scenario/ScenarioParser.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "ormel-simulator/Scenario/StatementParsing.h"

namespace ormel::simulator {

namespace {

class ScenarioParser {
 public:
  ScenarioParser(const std::string& fileName, std::string_view text)
      : cursor_(fileName, text), names_(cursor_), parsing_{cursor_, names_, [this] { return parseBody(); }} {}

  Block parse() {
    Block statements;
    while (cursor_.moveToStatement()) statements.push_back(parseStatement());
    names_.check();
    return statements;
  }

 private:
  // Deep enough for any conversation, and far from the end of the stack.
  static constexpr std::size_t deepestBlock = 50;

  Statement parseStatement() {
    const std::size_t start = cursor_.offset();
    const SourcePlace place = cursor_.place();
    Action action = parseAction(place);
    cursor_.expectEndOfLine();
    return Statement{place, cursor_.textSince(start), std::move(action)};
  }

  // The statements of a block, up to its "end".
  Block parseBody() {
    const SourcePlace opened = cursor_.place();
    cursor_.expectEndOfLine();
    if (++depth_ > deepestBlock) cursor_.failAt(opened, "blocks are nested too deeply");
    Block body;
    while (cursor_.moveToStatement()) {
      if (cursor_.accept("end")) {
        --depth_;
        return body;
      }
      body.push_back(parseStatement());
    }
    cursor_.failAt(opened, "the block that starts here has no \"end\"");
  }

  Action parseAction(SourcePlace place) {
    if (cursor_.accept("client")) return parseClientStatement(parsing_);
    if (cursor_.accept("server")) return checked(parseServerStatement(parsing_));
    if (cursor_.accept("wait")) return parseWait(parsing_);
    if (cursor_.accept("always")) return parseAlways(parsing_);
    if (cursor_.accept("repeat")) return parseRepeat();
    if (cursor_.accept("in any order")) return checked(ExpectInAnyOrder{parseBody()});
    if (cursor_.accept("in one write")) return checked(InOneWrite{parseBody()});
    if (cursor_.accept("in run")) return parseInRun();
    if (cursor_.accept("patience")) return SetPatience{cursor_.duration()};
    if (cursor_.accept("time limit")) return SetTimeLimit{cursor_.duration()};
    if (cursor_.accept("end")) cursor_.failAt(place, "this \"end\" ends no block");
    cursor_.failExpecting({"client", "server", "wait", "always", "repeat", "in any order", "in one write", "in run",
                           "patience", "time limit"});
  }

  Action parseRepeat() {
    Repeat repeat;
    repeat.times = cursor_.count("a number");
    cursor_.expect("times");
    repeat.name = parseNameGiven(parsing_, NameLedger::Kind::variable);
    repeat.body = parseBody();
    return repeat;
  }

  Action parseInRun() {
    InRun inRun;
    inRun.run = cursor_.count("the number of a run, from 1");
    inRun.orLater = cursor_.accept("or later");
    inRun.body = parseBody();
    return inRun;
  }

  // Some blocks hold only some kinds of statements.
  Action checked(Action action) {
    if (const auto* block = std::get_if<ExpectInAnyOrder>(&action)) {
      for (const Statement& statement : block->body) {
        const auto* expect = std::get_if<Expect>(&statement.action);
        const bool fits = expect != nullptr && expect->expectation.kind != Expectation::Kind::endOfInput;
        if (!fits) cursor_.failAt(statement.place, "only messages of the client can come in any order");
      }
    } else if (const auto* oneWrite = std::get_if<InOneWrite>(&action)) {
      checkOutputOnly(oneWrite->body);
    } else if (const auto* fork = std::get_if<Fork>(&action)) {
      checkNeverReads(fork->body);
    }
    return action;
  }

  void checkOutputOnly(const Block& body) {
    for (const Statement& statement : body) {
      const auto* ask = std::get_if<Ask>(&statement.action);
      const auto* write = std::get_if<WriteRaw>(&statement.action);
      const auto* repeat = std::get_if<Repeat>(&statement.action);
      const bool fits = std::holds_alternative<Answer>(statement.action) ||
                        std::holds_alternative<Notify>(statement.action) ||
                        std::holds_alternative<SendMessage>(statement.action) || (ask && !ask->expecting) ||
                        (write && write->stream == Stream::output) || repeat;
      if (!fits) cursor_.failAt(statement.place, "only what goes to standard output can be part of one write");
      if (repeat) checkOutputOnly(repeat->body);
    }
  }

  void checkNeverReads(const Block& body) {
    for (const Statement& statement : body) {
      const auto* ask = std::get_if<Ask>(&statement.action);
      const auto* repeat = std::get_if<Repeat>(&statement.action);
      const bool reads =
          std::holds_alternative<Expect>(statement.action) ||
          std::holds_alternative<ExpectInAnyOrder>(statement.action) ||
          std::holds_alternative<Always>(statement.action) || std::holds_alternative<SetReading>(statement.action) ||
          std::holds_alternative<Fork>(statement.action) || std::holds_alternative<InRun>(statement.action) ||
          std::holds_alternative<SetTimeLimit>(statement.action) || (ask && ask->expecting);
      if (reads) cursor_.failAt(statement.place, "a forked child only waits, writes, closes and exits");
      if (repeat) checkNeverReads(repeat->body);
    }
  }

  ScenarioCursor cursor_;
  NameLedger names_;
  StatementParsing parsing_;
  std::size_t depth_ = 0;
};

}  // namespace

Scenario parseScenario(const std::string& fileName, std::string_view text) {
  Scenario scenario;
  scenario.fileName = fileName;
  scenario.statements = ScenarioParser(fileName, text).parse();
  return scenario;
}

Scenario loadScenario(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw Error("cannot read the scenario " + path + ": " + std::strerror(errno));
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  return parseScenario(path, text);
}

}  // namespace ormel::simulator
