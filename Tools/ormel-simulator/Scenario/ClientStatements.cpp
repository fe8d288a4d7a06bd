#include "ormel-simulator/Scenario/StatementParsing.h"

namespace ormel::simulator {

namespace {

Expectation parseCall(StatementParsing& parsing, Expectation::Kind kind) {
  Expectation expectation;
  expectation.kind = kind;
  expectation.method = parsing.cursor.word("a method");
  expectation.withoutParams = parsing.cursor.accept("without params");
  if (!expectation.withoutParams) expectation.example = parseOptionalExample(parsing);
  if (kind == Expectation::Kind::request) expectation.name = parseNameGiven(parsing, NameLedger::Kind::clientRequest);
  return expectation;
}

Expectation parseClientAnswer(StatementParsing& parsing) {
  Expectation expectation;
  expectation.kind = Expectation::Kind::answer;
  ScenarioCursor& cursor = parsing.cursor;
  expectation.name = parseRequestNamed(parsing, NameLedger::Kind::serverRequest);
  if (cursor.accept("error")) expectation.kind = Expectation::Kind::errorAnswer;
  expectation.example = parseExample(parsing);
  return expectation;
}

Expectation parseExpectation(StatementParsing& parsing) {
  ScenarioCursor& cursor = parsing.cursor;
  if (cursor.accept("asks")) return parseCall(parsing, Expectation::Kind::request);
  if (cursor.accept("notifies")) return parseCall(parsing, Expectation::Kind::notification);
  if (cursor.accept("answers")) return parseClientAnswer(parsing);
  Expectation expectation;
  if (cursor.accept("sends")) {
    expectation.kind = Expectation::Kind::message;
    expectation.example = parseExample(parsing);
  } else if (cursor.accept("closes input")) {
    expectation.kind = Expectation::Kind::endOfInput;
  } else {
    cursor.failExpecting({"asks", "notifies", "answers", "sends", "closes input"});
  }
  return expectation;
}

}  // namespace

Action parseClientStatement(StatementParsing& parsing) { return Expect{parseExpectation(parsing)}; }

}  // namespace ormel::simulator
