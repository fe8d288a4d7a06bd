#include "ormel-simulator/Agent/SchemaExample.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ormel::simulator {
namespace {

struct ExampleCase {
  const char* schema;
  const char* example;
};

void PrintTo(const ExampleCase& row, std::ostream* stream) { *stream << row.schema; }

class SchemaExamples : public ::testing::TestWithParam<ExampleCase> {};

TEST_P(SchemaExamples, FitsItsSchema) {
  EXPECT_EQ(schemaExample(JSONValue::decode(GetParam().schema), "hello"), JSONValue::decode(GetParam().example));
}

INSTANTIATE_TEST_SUITE_P(
    All, SchemaExamples,
    ::testing::Values(
        ExampleCase{R"({"type":"object","required":["a"],"properties":{"a":{"type":"string"},"b":{"type":"boolean"}}})",
                    R"({"a":"a for: hello","b":true})"},
        ExampleCase{R"({"required":["a"]})", R"({"a":"a for: hello"})"},
        ExampleCase{R"({"type":"array","items":{"type":"integer"}})", "[3]"},
        ExampleCase{R"({"items":{"type":"null"},"minItems":2})", "[null,null]"},
        ExampleCase{R"({"type":"array","maxItems":0})", "[]"}, ExampleCase{R"({"type":["null","number"]})", "0.5"},
        ExampleCase{R"({"type":"integer","minimum":10})", "10"},
        ExampleCase{R"({"type":"integer","exclusiveMinimum":10})", "11"},
        ExampleCase{R"({"type":"integer","maximum":-2})", "-2"},
        ExampleCase{R"({"type":"number","exclusiveMaximum":0})", "-0.5"},
        ExampleCase{R"({"enum":["red","green"]})", "\"red\""}, ExampleCase{R"({"const":{"x":1}})", R"({"x":1})"},
        ExampleCase{R"({"type":"string","default":"d"})", "\"d\""},
        ExampleCase{R"({"type":"string","examples":["e"]})", "\"e\""},
        ExampleCase{R"({"type":"string","format":"date"})", "\"2026-01-31\""},
        ExampleCase{R"({"type":"string","maxLength":4})", "\"an e\""},
        ExampleCase{R"({"type":"string","minLength":7})", "\"hello..\""},
        ExampleCase{R"({"anyOf":[{"type":"boolean"},{"type":"null"}]})", "true"},
        ExampleCase{R"({"oneOf":[{"type":"integer"}]})", "3"}, ExampleCase{R"({"allOf":[{"type":"integer"}]})", "3"},
        ExampleCase{R"({"$ref":"#/$defs/a","$defs":{"a":{"type":"boolean"}}})", "true"},
        ExampleCase{R"({"$ref":"#/$defs/missing"})", "\"hello\""}, ExampleCase{"true", "\"hello\""}));

TEST(SchemaExample, OfASchemaThatRefersToItselfComesToAnEnd) {
  const JSONValue tree = JSONValue::decode(
      R"({"type":"object","properties":{"children":{"type":"array","items":{"$ref":"#"}}},"required":["children"]})");
  const JSONValue example = schemaExample(tree, "");
  EXPECT_NE(example.find("children"), nullptr);
  const JSONValue endless = JSONValue::decode(R"({"required":["next"],"properties":{"next":{"$ref":"#"}}})");
  EXPECT_LT(schemaExample(endless, "").encode().size(), 1000u);
}

}  // namespace
}  // namespace ormel::simulator
