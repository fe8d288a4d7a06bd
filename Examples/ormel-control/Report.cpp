#include "Report.h"

#include "TerminalText.h"

namespace ormel::control {

namespace {

void printText(const std::string& text, const Output& output) {
  output.write(output.isTerminal() ? onManyLines(text) : text);
}

void printTables(const std::vector<Table>& tables, const Output& output, const Output& errors) {
  bool isFirst = true;
  for (const Table& table : tables) {
    if (table.rows.empty()) {
      if (!table.whenEmpty.empty()) errors.write(table.whenEmpty + "\n");
      continue;
    }
    if (!isFirst) output.write("\n");
    isFirst = false;
    output.write(output.isTerminal() ? fitted(table, output.columns()) : tabSeparated(table));
  }
}

}  // namespace

Report told(const std::string& sentence) {
  Report report;
  report.text = onOneLine(sentence) + "\n";
  return report;
}

void print(const Report& report, bool json, const Output& output, const Output& errors) {
  if (json) {
    output.write(harmlessJSON(report.document.encode()) + "\n");
    return;
  }
  printText(report.text, output);
  printText(report.errorText, errors);
  printTables(report.tables, output, errors);
  for (const std::string& remark : report.remarks) errors.write(onOneLine(remark) + "\n");
}

}  // namespace ormel::control
