#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {
namespace {

TEST(JSONGetters, ReachPartsAndGiveNullForWhatIsAbsent) {
  const JSONValue value = JSONValue::decode(R"({"a":{"b":[1,{"c":"deep"}],"null":null},"text":"x"})");
  EXPECT_EQ(value["a"]["b"][1]["c"], JSONValue("deep"));
  EXPECT_EQ(&value["a"], value.find("a"));
  const std::uint64_t wide = 1;
  EXPECT_EQ(value["a"]["b"][wide]["c"], JSONValue("deep"));
  for (const JSONValue* absent : {&value["x"], &value["x"]["y"]["z"], &value["a"]["b"][2], &value["a"]["b"][-1],
                                  &value["a"]["b"]["c"], &value["a"][0], &value["text"]["t"], &value["text"][0],
                                  &value["a"]["null"], &value[std::numeric_limits<std::int64_t>::min()]}) {
    EXPECT_TRUE(absent->isNull());
  }
}

TEST(JSONGetters, GiveAPartOfATemporaryAsAValueOfItsOwn) {
  const JSONValue part = JSONValue::decode(R"({"a":["kept"]})")["a"][0];
  EXPECT_EQ(part.textOr(""), "kept");
  EXPECT_TRUE(JSONValue::decode("[]")[0].isNull());
  static_assert(std::is_same_v<decltype(JSONValue()["a"]), JSONValue>);
  static_assert(std::is_same_v<decltype(std::declval<const JSONValue&>()["a"]), const JSONValue&>);
}

TEST(JSONGetters, FallBackForEveryOtherCase) {
  const JSONValue value = JSONValue::decode(R"({"text":"x","empty":"","number":2.5,"whole":3,"yes":true,"no":false})");
  EXPECT_EQ(value["text"].textOr("f"), "x");
  EXPECT_EQ(value["empty"].textOr("f"), "");
  EXPECT_EQ(value["number"].numberOr(1), 2.5);
  EXPECT_EQ(value["whole"].integerOr(1), 3);
  EXPECT_TRUE(value["yes"].booleanOr(false));
  EXPECT_FALSE(value["no"].booleanOr(true));
  for (const char* other : {"number", "yes", "absent"}) EXPECT_EQ(value[other].textOr("f"), "f") << other;
  for (const char* other : {"text", "yes", "absent"}) EXPECT_EQ(value[other].numberOr(9), 9) << other;
  for (const char* other : {"text", "yes", "absent", "number"}) EXPECT_EQ(value[other].integerOr(9), 9) << other;
  for (const char* other : {"text", "whole", "absent"}) EXPECT_TRUE(value[other].booleanOr(true)) << other;
}

TEST(JSONGetters, NeverEndTheProcessForAnInteger) {
  for (const double beyond : {0x1p63, -0x1.8p63, 1e300, -1e300, 0.5, std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(), std::nan("")}) {
    EXPECT_EQ(JSONValue(beyond).integerValue(), std::nullopt) << beyond;
  }
  EXPECT_EQ(JSONValue(-0x1p63).integerValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(JSONValue(-0.0).integerValue(), 0);
  EXPECT_EQ(JSONValue(0x1p62).integerValue(), std::int64_t{1} << 62);
  EXPECT_EQ(JSONValue("1").integerValue(), std::nullopt);
}

}  // namespace
}  // namespace ormel
