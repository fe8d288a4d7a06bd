#include "Table.h"

#include <algorithm>
#include <numeric>

#include "TerminalText.h"

namespace ormel::control {

namespace {

constexpr std::size_t wideGap = 2;
/// A column with less than this tells nothing, so ids are cut before others get narrower.
constexpr std::size_t narrowColumn = 8;

using Row = std::vector<std::string>;
using Widths = std::vector<std::size_t>;

std::vector<Row> shownRows(const Table& table) {
  std::vector<Row> rows(1);
  for (const Column& column : table.columns) rows.front().push_back(column.title);
  for (const Row& row : table.rows) {
    Row& shown = rows.emplace_back();
    for (const std::string& cell : row) shown.push_back(onOneLine(cell));
  }
  return rows;
}

Widths naturalWidths(const std::vector<Row>& rows) {
  Widths widths(rows.front().size());
  for (const Row& row : rows) {
    for (std::size_t index = 0; index < widths.size(); ++index) {
      widths[index] = std::max(widths[index], columnsOf(row[index]));
    }
  }
  return widths;
}

std::size_t sumOf(const Widths& widths) { return std::accumulate(widths.begin(), widths.end(), std::size_t{0}); }

/// Takes from the widest of the columns that may be cut, the last of them first, until the sum fits or all are down to
/// `least`.
template <typename MayBeCut>
void cutWidest(Widths& widths, std::size_t sum, std::size_t least, MayBeCut mayBeCut) {
  while (sumOf(widths) > sum) {
    std::size_t widest = widths.size();
    for (std::size_t index = 0; index < widths.size(); ++index) {
      const bool isWider = widest == widths.size() || widths[index] >= widths[widest];
      if (mayBeCut(index) && widths[index] > least && isWider) widest = index;
    }
    if (widest == widths.size()) return;
    --widths[widest];
  }
}

std::string lineOf(const Row& row, const Widths& widths, std::size_t gap) {
  std::string line;
  std::size_t owed = 0;
  for (std::size_t index = 0; index < widths.size(); ++index) {
    const std::string text = cutTo(widths[index], row[index]);
    // Spaces go ahead of a text, so that none end a line.
    if (!text.empty()) line += std::string(owed, ' ') + text;
    if (!text.empty()) owed = 0;
    owed += widths[index] - columnsOf(text) + gap;
  }
  return line + "\n";
}

}  // namespace

std::string fitted(const Table& table, std::size_t width) {
  const std::vector<Row> rows = shownRows(table);
  Widths widths = naturalWidths(rows);
  const std::size_t room = std::max<std::size_t>(width, 1);
  // A text without any columns of its own still has its place.
  for (std::size_t& natural : widths) natural = std::clamp<std::size_t>(natural, 1, room);
  const std::size_t gap = widths.size() * (1 + wideGap) <= room + wideGap ? wideGap : 1;
  widths.resize(std::min(widths.size(), (room + gap) / (1 + gap)));
  const std::size_t sum = room - gap * (widths.size() - 1);
  cutWidest(widths, sum, narrowColumn, [&](std::size_t index) { return !table.columns[index].keptWhole; });
  cutWidest(widths, sum, 1, [](std::size_t) { return true; });
  std::string text;
  for (const Row& row : rows) text += lineOf(row, widths, gap);
  return text;
}

std::string tabSeparated(const Table& table) {
  std::string text;
  for (const Row& row : shownRows(table)) {
    for (std::size_t index = 0; index < row.size(); ++index) text += (index > 0 ? "\t" : "") + row[index];
    text += "\n";
  }
  return text;
}

}  // namespace ormel::control
