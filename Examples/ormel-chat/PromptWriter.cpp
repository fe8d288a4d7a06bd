#include "PromptWriter.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "ForeignText.h"

namespace ormel::chat {

namespace {

constexpr std::size_t labelColumns = 8;
constexpr std::string_view bar = " | ";
/// Margin, which some terminals draw in three columns, label, bar, and the last column, behind which some go on to the
/// next line.
constexpr int columnsBesideText = 3 + static_cast<int>(labelColumns) + 3 + 1;
constexpr int fewestTextColumns = 12;

constexpr std::size_t mostRows = 20;
constexpr std::size_t firstRows = 8;
constexpr std::size_t lastRows = 10;

std::vector<std::string_view> linesOf(std::string_view text) {
  // The last line may be ended or not.
  if (text.ends_with('\n')) text.remove_suffix(1);
  std::vector<std::string_view> lines;
  for (std::size_t end; (end = text.find('\n')) != text.npos; text.remove_prefix(end + 1)) {
    lines.push_back(text.substr(0, end));
  }
  lines.push_back(text);
  return lines;
}

int textColumns(int columns) {
  if (columns <= 0) return std::numeric_limits<int>::max();
  return std::max(columns - columnsBesideText, fewestTextColumns);
}

}  // namespace

void PromptWriter::say(std::string_view words, Style style) {
  console_.beginAsking();
  console_.write(words, style);
  console_.endLine();
}

void PromptWriter::invite(std::string_view words) {
  console_.beginAsking();
  console_.write(words, Style::bold);
}

void PromptWriter::quote(const std::vector<Quote>& quotes) {
  std::vector<Row> rows;
  for (const auto& each : quotes) addRows(each, rows);
  const bool omits = !showsAll_ && console_.isTerminal() && rows.size() > mostRows;
  const std::size_t omitted = omits ? rows.size() - firstRows - lastRows : 0;
  for (std::size_t index = 0; index < rows.size(); ++index) {
    if (omits && index == firstRows) {
      say("... " + std::to_string(omitted) + " lines are left out here; \"view\" shows them ...", Style::yellow);
      index += omitted;
    }
    write(rows[index]);
  }
  hasOmitted_ = hasOmitted_ || omits;
}

void PromptWriter::addRows(const Quote& quote, std::vector<Row>& rows) {
  const auto lines = linesOf(quote.text);
  const std::string count = "/" + std::to_string(lines.size());
  for (std::size_t index = 0; index < lines.size(); ++index) {
    std::string label = index == 0 ? quote.label : "";
    if (quote.isNumbered && lines.size() > 1) label = std::to_string(index + 1) + count;
    addLine(std::move(label), lines[index], rows);
  }
}

void PromptWriter::addLine(std::string label, std::string_view line, std::vector<Row>& rows) {
  const int most = textColumns(console_.columns());
  rows.push_back({std::move(label), {}});
  int columns = 0;
  VisibleReader reader(line);
  while (auto piece = reader.next()) {
    if (columns > 0 && columns + piece->columns > most) {
      rows.push_back({"+", {}});
      columns = 0;
    }
    columns += piece->columns;
    if (piece->isEscape) ++escapes_;
    auto& spans = rows.back().spans;
    if (spans.empty() || spans.back().isEscape != piece->isEscape) spans.push_back({"", piece->isEscape});
    spans.back().text += piece->text;
  }
  hasRightToLeft_ = hasRightToLeft_ || reader.hasRightToLeft();
}

void PromptWriter::write(const Row& row) {
  console_.beginAsking();
  console_.write(std::string(labelColumns - std::min(labelColumns, row.label.size()), ' ') + row.label);
  console_.write(bar, Style::dim);
  for (const auto& span : row.spans) console_.write(span.text, span.isEscape ? Style::red : Style::plain);
  console_.endLine();
}

void PromptWriter::explain() {
  if (escapes_ == 1) say("1 character that could not be seen is written as its number in <>.", Style::red);
  if (escapes_ > 1) {
    say(std::to_string(escapes_) + " characters that could not be seen are written as their numbers in <>.",
        Style::red);
  }
  if (hasRightToLeft_) say("A terminal may show what is written from right to left in another order.", Style::red);
}

}  // namespace ormel::chat
