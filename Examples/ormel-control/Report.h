#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "Output.h"
#include "Table.h"

namespace ormel::control {

/// The outcome of a command, for people and for programs.
struct Report {
  Report() {}

  /// The output for `--json`.
  JSONValue document = JSONValue::object();
  std::vector<Table> tables;
  /// Ahead of the tables. A terminal gets it without control characters, anything else as it is.
  std::string text;
  /// The same for standard error.
  std::string errorText;
  /// Remarks for the user beside the tables; printed to standard error.
  std::vector<std::string> remarks;
  /// The exit status of the program.
  int status = 0;
};

/// The records of the server as one JSON array.
template <typename Record>
JSONValue documentOf(const std::vector<Record>& records) {
  std::vector<JSONValue> elements;
  for (const Record& record : records) elements.push_back(encode(record));
  return JSONValue::array(elements);
}

/// A report of one sentence.
Report told(const std::string& sentence);

/// Prints the report to the terminal, file or pipe. Fails as `Output::write`.
void print(const Report& report, bool json, const Output& output, const Output& errors);

}  // namespace ormel::control
