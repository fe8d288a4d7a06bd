#include "ormel-simulator/Scenario/ExampleMatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ormel::simulator {
namespace {

std::string compared(std::string_view example, std::string_view actual, bool exact = false) {
  Variables variables;
  Example wanted;
  wanted.value = JSONValue::decode(example);
  wanted.exact = exact;
  return difference(wanted, JSONValue::decode(actual), "params", variables).value_or("");
}

TEST(ExampleMatcher, MatchesEqualValuesAndNamesUnequalOnes) {
  EXPECT_EQ(compared(R"({"a":[1,true,null,"x"]})", R"({"a":[1,true,null,"x"]})"), "");
  EXPECT_EQ(compared(R"({"a":{"b":"x"}})", R"({"a":{"b":"y"}})"), R"(params.a.b is "y" instead of "x")");
  EXPECT_EQ(compared("1", "\"1\""), "params is \"1\" instead of 1");
  EXPECT_EQ(compared(R"({"a":[1,2]})", R"({"a":[1,3]})"), "params.a[1] is 3 instead of 2");
}

TEST(ExampleMatcher, LetsObjectsHaveMoreMembersUnlessTheExampleIsExact) {
  EXPECT_EQ(compared(R"({"a":1})", R"({"a":1,"b":2})"), "");
  EXPECT_EQ(compared(R"({"a":1})", R"({"a":1,"b":2})", true), "params.b is there, which was not expected");
  EXPECT_EQ(compared(R"({"a":{}})", R"({"a":{"b":2}})", true), "params.a.b is there, which was not expected");
}

TEST(ExampleMatcher, OpensOrClosesOneObjectByItsOthers) {
  EXPECT_EQ(compared(R"({"a":1,"$others":"$absent"})", R"({"a":1,"b":2})"),
            "params.b is there, which was not expected");
  EXPECT_EQ(compared(R"({"a":1,"$others":"$any"})", R"({"a":1,"b":2})", true), "");
}

TEST(ExampleMatcher, NamesMissingAndForbiddenMembers) {
  EXPECT_EQ(compared(R"({"a":1})", "{}"), "params.a is missing");
  EXPECT_EQ(compared(R"({"a":"$any"})", "{}"), "params.a is missing");
  EXPECT_EQ(compared(R"({"a":"$absent"})", "{}"), "");
  EXPECT_EQ(compared(R"({"a":"$absent"})", R"({"a":null})"), "params.a is null instead of absent");
  EXPECT_EQ(compared(R"({"a":"$maybe"})", "{}", true), "");
  EXPECT_EQ(compared(R"({"a":"$maybe"})", R"({"a":3})", true), "");
}

TEST(ExampleMatcher, ChecksTheTypesOfWildcards) {
  EXPECT_EQ(compared("\"$any\"", "null"), "");
  EXPECT_EQ(compared("\"$string\"", "\"\""), "");
  EXPECT_EQ(compared("\"$string\"", "1"), "params is 1 instead of a string");
  EXPECT_EQ(compared("\"$number\"", "1.5"), "");
  EXPECT_EQ(compared("\"$number\"", "\"1\""), "params is \"1\" instead of a number");
  EXPECT_EQ(compared("\"$integer\"", "1.0"), "");
  EXPECT_EQ(compared("\"$integer\"", "1e300"), "");
  EXPECT_EQ(compared("\"$integer\"", "1.5"), "params is 1.5 instead of an integer");
  EXPECT_EQ(compared("\"$bool\"", "false"), "");
  EXPECT_EQ(compared("\"$bool\"", "0"), "params is 0 instead of a bool");
  EXPECT_EQ(compared("\"$object\"", "{}"), "");
  EXPECT_EQ(compared("\"$object\"", "[]"), "params is [] instead of an object");
  EXPECT_EQ(compared("\"$array\"", "[]"), "");
  EXPECT_EQ(compared("\"$array\"", "{}"), "params is {} instead of an array");
  EXPECT_EQ(compared("\"$null\"", "null"), "");
  EXPECT_EQ(compared("\"$null\"", "0"), "params is 0 instead of null");
}

TEST(ExampleMatcher, ComparesKindsOfContainers) {
  EXPECT_EQ(compared("{}", "[]"), "params is [] instead of an object");
  EXPECT_EQ(compared("[]", "{}"), "params is {} instead of an array");
}

TEST(ExampleMatcher, ComparesPartsOfTexts) {
  EXPECT_EQ(compared("\"$contains:ell\"", "\"hello\""), "");
  EXPECT_EQ(compared("\"$contains:ell\"", "\"hallo\""), R"(params is "hallo", which does not contain "ell")");
  EXPECT_EQ(compared("\"$contains:1\"", "1"), R"(params is 1, which does not contain "1")");
  EXPECT_EQ(compared("\"$matches:[0-9a-f]{2}\"", "\"a0\""), "");
  EXPECT_EQ(compared("\"$matches:[0-9a-f]{2}\"", "\"a0b\""), R"(params is "a0b", which does not match [0-9a-f]{2})");
  EXPECT_EQ(compared("\"$matches:1\"", "1"), "params is 1, which does not match 1");
}

TEST(ExampleMatcher, CountsTheElementsOfArrays) {
  EXPECT_EQ(compared("[1]", "[1,2]"), "params has 2 elements instead of 1");
  EXPECT_EQ(compared("[1,\"$rest\"]", "[1,2,3]"), "");
  EXPECT_EQ(compared("[1,\"$rest\"]", "[1]"), "");
  EXPECT_EQ(compared("[1,\"$rest\"]", "[]"), "params has 0 elements instead of 1 or more");
}

TEST(ExampleMatcher, ReadsADoubledDollarSignAsOne) {
  EXPECT_EQ(compared("\"$$any\"", "\"$any\""), "");
  EXPECT_EQ(compared("\"$$any\"", "1"), "params is 1 instead of \"$any\"");
}

TEST(ExampleMatcher, CapturesValuesAndComparesWithThemAtOnce) {
  Variables variables;
  Example example;
  example.value = JSONValue::decode(R"(["$string:name", "$name", "$capture:other"])");
  EXPECT_EQ(difference(example, JSONValue::decode(R"(["a","a",[1]])"), "x", variables), std::nullopt);
  EXPECT_EQ(variables.get("name"), JSONValue("a"));
  EXPECT_EQ(variables.get("other"), JSONValue::decode("[1]"));
}

TEST(ExampleMatcher, KeepsCapturesOnlyWhenEverythingMatches) {
  Variables variables;
  variables.set("name", "before");
  Example example;
  example.value = JSONValue::decode(R"(["$string:name", 1])");
  EXPECT_NE(difference(example, JSONValue::decode(R"(["a",2])"), "x", variables), std::nullopt);
  EXPECT_EQ(variables.get("name"), JSONValue("before"));
}

TEST(ExampleMatcher, FillsVariablesIntoLiterals) {
  Variables variables;
  variables.set("n", 3);
  Example example;
  example.value = "item ${n}";
  EXPECT_EQ(difference(example, "item 3", "x", variables), std::nullopt);
}

TEST(Variables, AreFilledIntoPayloads) {
  Variables variables;
  variables.set("id", 7);
  variables.set("name", "x");
  const JSONValue payload =
      JSONValue::decode(R"({"a":["$id","${id}-${name}"],"b":"$$id","c":"costs $5 ${","d":"$any"})");
  EXPECT_EQ(variables.filledIn(payload),
            JSONValue::decode(R"({"a":[7,"7-x"],"b":"$id","c":"costs $5 ${","d":"$any"})"));
}

TEST(Variables, FailWhenTheyHaveNoValueYet) {
  try {
    Variables().filledIn("$id");
    FAIL();
  } catch (const UnsetVariable& error) {
    EXPECT_STREQ(error.what(), "nothing has been captured as \"id\" so far");
  }
}

}  // namespace
}  // namespace ormel::simulator
