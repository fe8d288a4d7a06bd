#include "ormel-simulator/Scenario/StatementParsing.h"

#include "ormel-simulator/Scenario/Signals.h"

namespace ormel::simulator {

Example parseExample(StatementParsing& parsing) {
  Example example;
  example.exact = parsing.cursor.accept("exactly");
  const SourcePlace place = parsing.cursor.place();
  example.value = parsing.cursor.json("example");
  parsing.names.enterExample(example.value, place);
  return example;
}

std::optional<Example> parseOptionalExample(StatementParsing& parsing) {
  if (!parsing.cursor.atJSON() && !parsing.cursor.isNext("exactly")) return std::nullopt;
  return parseExample(parsing);
}

JSONValue parsePayload(StatementParsing& parsing, std::string_view what) {
  const SourcePlace place = parsing.cursor.place();
  JSONValue payload = parsing.cursor.json(what);
  parsing.names.enterPayload(payload, place);
  return payload;
}

int parseSignal(StatementParsing& parsing) {
  const SourcePlace place = parsing.cursor.place();
  const std::string name = parsing.cursor.word("a signal such as TERM");
  const auto signal = signalNamed(name);
  if (!signal) parsing.cursor.failAt(place, "\"" + name + "\" is no signal that ends a process");
  return *signal;
}

std::string parseRequestNamed(StatementParsing& parsing, NameLedger::Kind kind) {
  ScenarioCursor& cursor = parsing.cursor;
  std::string name;
  const bool named = cursor.atName() && !cursor.isNext("with") && !cursor.isNext("error") && !cursor.isNext("exactly");
  if (named) {
    const SourcePlace place = cursor.place();
    name = cursor.name("the name of a request");
    parsing.names.use(kind, name, place);
  }
  cursor.accept("with");
  return name;
}

std::string parseNameGiven(StatementParsing& parsing, NameLedger::Kind kind) {
  if (!parsing.cursor.accept("as")) return {};
  const SourcePlace place = parsing.cursor.place();
  std::string name = parsing.cursor.name("a name");
  parsing.names.define(kind, name, place);
  // The id of a named request is a variable of the same name.
  if (kind != NameLedger::Kind::variable) parsing.names.define(NameLedger::Kind::variable, name, place);
  return name;
}

Action parseWait(StatementParsing& parsing) {
  Wait wait;
  if (!parsing.cursor.accept("until")) {
    wait.duration = parsing.cursor.duration();
  } else if (parsing.cursor.accept("input closes")) {
    wait.until = Wait::Until::inputClosed;
  } else if (parsing.cursor.accept("killed")) {
    wait.until = Wait::Until::killed;
  } else if (parsing.cursor.accept("file")) {
    wait.until = Wait::Until::fileExists;
    wait.file = parsing.cursor.quotedText("the name of a file");
  } else if (parsing.cursor.accept("signal")) {
    wait.until = Wait::Until::signalArrived;
    wait.signal = parseSignal(parsing);
  } else {
    parsing.cursor.failExpecting({"input closes", "killed", "file", "signal"});
  }
  return wait;
}

Action parseAlways(StatementParsing& parsing) {
  Always always;
  const bool answers = parsing.cursor.accept("answer");
  if (!answers && !parsing.cursor.accept("ignore")) parsing.cursor.failExpecting({"answer", "ignore"});
  always.expectation.kind = answers ? Expectation::Kind::request : Expectation::Kind::notification;
  always.expectation.method = parsing.cursor.word("a method");
  always.expectation.example = parseOptionalExample(parsing);
  if (!answers) return always;
  parsing.cursor.expect("with");
  Answer answer;
  answer.isError = parsing.cursor.accept("error");
  answer.payload = parsePayload(parsing, answer.isError ? "error" : "result");
  always.answer = answer;
  return always;
}

}  // namespace ormel::simulator
