#include "ormel-control/Table.h"

#include <gtest/gtest.h>

#include <sstream>

#include "ormel-control/TerminalText.h"

namespace ormel::control {
namespace {

Table sample() {
  return {{{"ID", true}, "NAME", "NOTE"},
          {{"0123456789", "short", "a long note that says much"}, {"9", "日本語", ""}, {"", "x\ny", "z"}},
          "Nothing."};
}

TEST(ControlTable, StandsInColumns) {
  EXPECT_EQ(fitted(sample(), 80),
            "ID          NAME    NOTE\n"
            "0123456789  short   a long note that says much\n"
            "9           日本語\n"
            "            x\\ny    z\n");
}

TEST(ControlTable, CutsWhatIsWidestAndIDsLast) {
  EXPECT_EQ(fitted(sample(), 30),
            "ID          NAME    NOTE\n"
            "0123456789  short   a long no…\n"
            "9           日本語\n"
            "            x\\ny    z\n");
  EXPECT_EQ(fitted(sample(), 23),
            "ID       NAME    NOTE\n"
            "012345…  short   a lon…\n"
            "9        日本語\n"
            "         x\\ny    z\n");
}

TEST(ControlTable, IsNoWiderThanTheTerminal) {
  for (std::size_t width = 0; width <= 60; ++width) {
    std::istringstream lines(fitted(sample(), width));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
      EXPECT_LE(columnsOf(line), std::max<std::size_t>(width, 1)) << width << ": " << line;
      EXPECT_FALSE(line.ends_with(' ')) << width << ": " << line;
    }
    EXPECT_EQ(count, 4) << width;
  }
}

TEST(ControlTable, LeavesOutTheLastColumnsWhereThereIsNoPlace) {
  EXPECT_EQ(fitted(sample(), 3), "… …\n… …\n9 …\n  …\n");
  EXPECT_EQ(fitted(sample(), 1), "…\n…\n9\n\n");
}

TEST(ControlTable, IsWholeForAProgram) {
  EXPECT_EQ(tabSeparated(sample()),
            "ID\tNAME\tNOTE\n"
            "0123456789\tshort\ta long note that says much\n"
            "9\t日本語\t\n"
            "\tx\\ny\tz\n");
}

}  // namespace
}  // namespace ormel::control
