#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ormel::control {

struct Column {
  Column(const char* columnTitle, bool isKeptWhole = false) : title(columnTitle), keptWhole(isKeptWhole) {}

  std::string title;
  /// Is cut only when all other columns have been cut to little: ids are of no use when they are cut.
  bool keptWhole = false;
};

/// Rows of texts as the server gave them; each has as many as there are columns.
struct Table {
  std::vector<Column> columns;
  std::vector<std::vector<std::string>> rows;
  /// The text shown in place of an empty table.
  std::string whenEmpty;
};

/// The table for a terminal of this width, with no line wider. Long texts end in "…"; columns that find no place at
/// all are left out, the last ones first.
std::string fitted(const Table& table, std::size_t width);

/// The table for a program: texts as long as they are, with tabs in between. Control characters are escaped, so that
/// each row is a line.
std::string tabSeparated(const Table& table);

}  // namespace ormel::control
