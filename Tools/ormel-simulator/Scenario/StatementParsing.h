#pragma once

#include <functional>
#include <string>

#include "ormel-simulator/Scenario/NameLedger.h"
#include "ormel-simulator/Scenario/Scenario.h"
#include "ormel-simulator/Scenario/ScenarioCursor.h"

namespace ormel::simulator {

/// The state that the readers of single statements share.
struct StatementParsing {
  ScenarioCursor& cursor;
  NameLedger& names;
  /// Reads statements up to the word "end", and returns them.
  std::function<Block()> parseBlock;
};

Action parseClientStatement(StatementParsing& parsing);
Action parseServerStatement(StatementParsing& parsing);
Action parseWait(StatementParsing& parsing);
Action parseAlways(StatementParsing& parsing);

/// Reads "exactly" and JSON, both optional.
std::optional<Example> parseOptionalExample(StatementParsing& parsing);
Example parseExample(StatementParsing& parsing);
JSONValue parsePayload(StatementParsing& parsing, std::string_view what);
int parseSignal(StatementParsing& parsing);
/// Reads the name of an earlier request and "with", both optional.
std::string parseRequestNamed(StatementParsing& parsing, NameLedger::Kind kind);
/// Reads an optional "as" and a name.
std::string parseNameGiven(StatementParsing& parsing, NameLedger::Kind kind);

}  // namespace ormel::simulator
