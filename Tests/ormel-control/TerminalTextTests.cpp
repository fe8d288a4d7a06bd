#include "ormel-control/TerminalText.h"

#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::control {
namespace {

TEST(ControlTerminalText, EscapesWhatSteersATerminal) {
  const struct {
    std::string text;
    const char* oneLine;
    const char* manyLines;
  } rows[] = {
      {"plain", "plain", "plain"},
      {"a\nb\tc", "a\\nb\\tc", "a\nb\tc"},
      {"\x1b[31mred", "\\u001b[31mred", "\\u001b[31mred"},
      {"\r\x07", "\\r\\u0007", "\\r\\u0007"},
      {std::string("\0", 1), "\\u0000", "\\u0000"},
      {"\x7f", "\\u007f", "\\u007f"},
      {"\xc2\x80 \xc2\x9b"
       "5m \xc2\x9f",
       "\\u0080 \\u009b5m \\u009f", "\\u0080 \\u009b5m \\u009f"},
      {"\xc2\xa0", "\xc2\xa0", "\xc2\xa0"},
      {"\u202eevil\u202c", "\\u202eevil\\u202c", "\\u202eevil\\u202c"},
      {"\u200e\u200f\u061c\u2066\u2069", "\\u200e\\u200f\\u061c\\u2066\\u2069", "\\u200e\\u200f\\u061c\\u2066\\u2069"},
      {"\u2028\u2029", "\\u2028\\u2029", "\\u2028\\u2029"},
      {"\xff", "\xef\xbf\xbd", "\xef\xbf\xbd"},
      {"", "", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(onOneLine(row.text), row.oneLine);
    EXPECT_EQ(onManyLines(row.text), row.manyLines);
  }
}

TEST(ControlTerminalText, LeavesJSONTheSameValue) {
  const JSONValue value = JSONValue::object({{"text", "\x1b[0m \u202e \xc2\x9b \x7f \n \""}});
  const std::string json = harmlessJSON(value.encode());
  EXPECT_EQ(JSONValue::decode(json), value);
  for (const char byte : json) EXPECT_TRUE(byte >= 0x20 && byte < 0x7f) << json;
}

TEST(ControlTerminalText, CountsColumnsAsATerminalDoes) {
  const struct {
    const char* text;
    std::size_t columns;
  } rows[] = {{"", 0},          {"abc", 3},    {"äöü", 3}, {"a\u0308", 1}, {"日本", 4},
              {"e\u0301日", 3}, {"\u200b", 0}, {"한", 2},  {"🙂", 2},      {"❤\ufe0f", 2}};
  for (const auto& row : rows) EXPECT_EQ(columnsOf(row.text), row.columns) << row.text;
}

TEST(ControlTerminalText, IsCutBetweenCharacters) {
  const struct {
    const char* text;
    std::size_t columns;
    const char* cut;
  } rows[] = {{"abc", 3, "abc"},
              {"abcd", 3, "ab…"},
              {"abc", 1, "…"},
              {"abc", 0, ""},
              {"", 0, ""},
              {"日本語", 6, "日本語"},
              {"日本語", 5, "日本…"},
              {"日本語", 4, "日…"},
              {"日本", 1, "…"},
              {"a\u0308bc", 2, "a\u0308…"},
              {"ab\u0301", 2, "ab\u0301"},
              {"日", 2, "日"}};
  for (const auto& row : rows) EXPECT_EQ(cutTo(row.columns, row.text), row.cut) << row.text << row.columns;
}

}  // namespace
}  // namespace ormel::control
