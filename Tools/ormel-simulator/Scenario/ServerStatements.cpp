#include "ormel-simulator/Scenario/StatementParsing.h"

namespace ormel::simulator {

namespace {

Action parseAnswer(StatementParsing& parsing) {
  Answer answer;
  ScenarioCursor& cursor = parsing.cursor;
  answer.name = parseRequestNamed(parsing, NameLedger::Kind::clientRequest);
  answer.isError = cursor.accept("error");
  answer.payload = parsePayload(parsing, answer.isError ? "error" : "result");
  return answer;
}

std::optional<JSONValue> parseParams(StatementParsing& parsing) {
  if (!parsing.cursor.atJSON()) return std::nullopt;
  return parsePayload(parsing, "params");
}

Action parseNotify(StatementParsing& parsing) {
  Notify notify;
  notify.method = parsing.cursor.word("a method");
  notify.params = parseParams(parsing);
  return notify;
}

Action parseAsk(StatementParsing& parsing) {
  Ask ask;
  ScenarioCursor& cursor = parsing.cursor;
  ask.method = cursor.word("a method");
  ask.params = parseParams(parsing);
  if (cursor.accept("with id")) ask.id = parsePayload(parsing, "id");
  ask.name = parseNameGiven(parsing, NameLedger::Kind::serverRequest);
  if (!cursor.accept("expecting")) return ask;
  Expectation expectation;
  expectation.kind = cursor.accept("error") ? Expectation::Kind::errorAnswer : Expectation::Kind::answer;
  expectation.example = parseExample(parsing);
  ask.expecting = expectation;
  return ask;
}

Piece parsePiece(StatementParsing& parsing) {
  constexpr std::size_t mostTimes = 1'000'000'000;
  Piece piece;
  ScenarioCursor& cursor = parsing.cursor;
  const SourcePlace place = cursor.place();
  piece.text = cursor.quotedText("a text");
  parsing.names.enterText(piece.text, place);
  if (cursor.atEndOfLine() || cursor.isNext("then")) return piece;
  piece.times = cursor.count("\"then\" or a number of times");
  if (piece.times > mostTimes) cursor.failAt(place, "a text can be written a billion times at most");
  cursor.expect("times");
  return piece;
}

Action parseWrite(StatementParsing& parsing) {
  WriteRaw write;
  ScenarioCursor& cursor = parsing.cursor;
  if (cursor.accept("stderr")) {
    write.stream = Stream::error;
  } else if (!cursor.accept("raw")) {
    cursor.failExpecting({"raw", "stderr"});
  }
  do {
    write.pieces.push_back(parsePiece(parsing));
  } while (cursor.accept("then"));
  return write;
}

Stream parseOutputStream(StatementParsing& parsing) {
  if (parsing.cursor.accept("stdout")) return Stream::output;
  if (parsing.cursor.accept("stderr")) return Stream::error;
  parsing.cursor.failExpecting({"stdout", "stderr"});
}

Action parseFlood(StatementParsing& parsing) {
  Flood flood;
  flood.stream = parseOutputStream(parsing);
  flood.bytes = parsing.cursor.count("a number of bytes");
  return flood;
}

Action parseClose(StatementParsing& parsing) {
  CloseStream close;
  if (!parsing.cursor.accept("stdin")) close.stream = parseOutputStream(parsing);
  return close;
}

Action parseExit(StatementParsing& parsing) {
  constexpr std::size_t largestStatus = 255;
  Exit exit;
  ScenarioCursor& cursor = parsing.cursor;
  if (cursor.accept("with signal")) {
    exit.signal = parseSignal(parsing);
    return exit;
  }
  const SourcePlace place = cursor.place();
  const std::size_t status = cursor.count("an exit status or \"with signal\"");
  if (status > largestStatus) cursor.failAt(place, "an exit status is at most 255");
  exit.status = static_cast<int>(status);
  return exit;
}

}  // namespace

Action parseServerStatement(StatementParsing& parsing) {
  ScenarioCursor& cursor = parsing.cursor;
  if (cursor.accept("answers")) return parseAnswer(parsing);
  if (cursor.accept("notifies")) return parseNotify(parsing);
  if (cursor.accept("asks")) return parseAsk(parsing);
  if (cursor.accept("sends")) return SendMessage{parsePayload(parsing, "message")};
  if (cursor.accept("writes")) return parseWrite(parsing);
  if (cursor.accept("floods")) return parseFlood(parsing);
  if (cursor.accept("closes")) return parseClose(parsing);
  if (cursor.accept("ignores")) return IgnoreSignal{parseSignal(parsing)};
  if (cursor.accept("stops reading")) return SetReading{false};
  if (cursor.accept("resumes reading")) return SetReading{true};
  if (cursor.accept("exits")) return parseExit(parsing);
  if (cursor.accept("forks")) return Fork{parsing.parseBlock()};
  cursor.failExpecting({"answers", "notifies", "asks", "sends", "writes", "floods", "closes", "ignores",
                        "stops reading", "resumes reading", "exits", "forks"});
}

}  // namespace ormel::simulator
