#include "OrmelSDK/AppServerRun/Launch/ProcessEnvironment.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <map>
#include <string>

namespace {

namespace ProcessEnvironment = ormel::detail::ProcessEnvironment;

TEST(ProcessEnvironment, HoldsTheVariablesOfThisProcess) {
  ASSERT_EQ(::setenv("ORMEL_TEST_VARIABLE", "a=b c", 1), 0);
  EXPECT_EQ(ProcessEnvironment::current().at("ORMEL_TEST_VARIABLE"), "a=b c");
  ASSERT_EQ(::unsetenv("ORMEL_TEST_VARIABLE"), 0);
  EXPECT_FALSE(ProcessEnvironment::current().contains("ORMEL_TEST_VARIABLE"));
}

TEST(ProcessEnvironment, SplitsAnEntryAtItsFirstEqualsSign) {
  constexpr std::array block = {"A=1", "B=x=y=", "C=", "=D", static_cast<const char*>(nullptr)};
  const std::map<std::string, std::string> expected = {{"A", "1"}, {"B", "x=y="}, {"C", ""}, {"", "D"}};
  EXPECT_EQ(ProcessEnvironment::fromBlock(block.data()), expected);
}

TEST(ProcessEnvironment, SkipsAnEntryWithoutAnEqualsSign) {
  constexpr std::array block = {"A", "", "B=1", static_cast<const char*>(nullptr)};
  const std::map<std::string, std::string> expected = {{"B", "1"}};
  EXPECT_EQ(ProcessEnvironment::fromBlock(block.data()), expected);
}

TEST(ProcessEnvironment, LetsTheLaterEntryOfANameStand) {
  constexpr std::array block = {"A=1", "A=2", static_cast<const char*>(nullptr)};
  EXPECT_EQ(ProcessEnvironment::fromBlock(block.data()).at("A"), "2");
}

TEST(ProcessEnvironment, IsEmptyWithoutABlock) { EXPECT_TRUE(ProcessEnvironment::fromBlock(nullptr).empty()); }

}  // namespace
