#include <gtest/gtest.h>
#include "OrmelSDK/JSONValue.h"
using ormel::JSONValue;
TEST(Smoke, Works) {
  auto v = JSONValue::decode(R"({"a":[1,2.5,"x\u00e9",null,true,{"b":{}}],"a":3,"c":123456789012345678901234567890})");

  EXPECT_EQ(v, v.detached());
}
