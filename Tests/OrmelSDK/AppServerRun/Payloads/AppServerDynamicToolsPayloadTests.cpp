#include "OrmelSDK/AppServerRun/Payloads/AppServerDynamicToolsPayload.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using detail::buildDynamicToolsArray;
using tests::json;

DynamicToolSpec spec(std::optional<std::string> namespace_, const std::string& name) {
  DynamicToolSpec made;
  made.namespace_ = std::move(namespace_);
  made.name = name;
  made.description = "does " + name;
  made.inputSchema = json(R"({"type":"object"})");
  return made;
}

DynamicTool tool(std::optional<std::string> namespace_, const std::string& name) {
  return {spec(std::move(namespace_), name), [](const DynamicToolCallContext&) { return DynamicToolResult(); }};
}

TEST(DynamicToolFunctionSpecObject, HoldsWhatTheModelKnows) {
  EXPECT_EQ(detail::dynamicToolFunctionSpecObject(spec(std::nullopt, "a")),
            json(R"({"type":"function","name":"a","description":"does a","inputSchema":{"type":"object"}})"));
}

TEST(DynamicToolFunctionSpecObject, LeavesTheNamespaceToTheGroup) {
  EXPECT_EQ(detail::dynamicToolFunctionSpecObject(spec("ns", "a")),
            detail::dynamicToolFunctionSpecObject(spec(std::nullopt, "a")));
}

TEST(DynamicToolFunctionSpecObject, SaysThatAToolLoadsLateOnlyWhenItDoes) {
  auto late = spec(std::nullopt, "a");
  late.deferLoading = true;
  EXPECT_EQ(detail::dynamicToolFunctionSpecObject(late),
            json(R"({"type":"function","name":"a","description":"does a","inputSchema":{"type":"object"},
                     "deferLoading":true})"));
}

TEST(DynamicToolFunctionSpecObject, PassesAnySchemaOn) {
  auto changed = spec(std::nullopt, "a");
  changed.inputSchema = nullptr;
  EXPECT_EQ(detail::dynamicToolFunctionSpecObject(changed),
            json(R"({"type":"function","name":"a","description":"does a","inputSchema":null})"));
}

TEST(BuildDynamicToolsArray, GivesNothingWithoutTools) {
  EXPECT_EQ(buildDynamicToolsArray(std::nullopt), std::nullopt);
  EXPECT_EQ(buildDynamicToolsArray(std::vector<DynamicTool>()), std::nullopt);
}

TEST(BuildDynamicToolsArray, PutsPlainToolsAheadOfGroups) {
  EXPECT_EQ(buildDynamicToolsArray(std::vector{tool("ns1", "a"), tool(std::nullopt, "b"), tool("ns1", "c")}), json(R"([
    {"type": "function", "name": "b", "description": "does b", "inputSchema": {"type": "object"}},
    {"type": "namespace", "name": "ns1", "description": "does a", "tools": [
      {"type": "function", "name": "a", "description": "does a", "inputSchema": {"type": "object"}},
      {"type": "function", "name": "c", "description": "does c", "inputSchema": {"type": "object"}}]}])"));
}

std::vector<std::string> names(const std::vector<DynamicTool>& tools) {
  std::vector<std::string> found;
  const auto array = buildDynamicToolsArray(tools);
  if (!array) return found;
  for (const auto& element : *array->arrayValue()) {
    std::string name(*element.find("name")->stringValue());
    if (const auto* members = element.find("tools")) {
      for (const auto& member : *members->arrayValue()) {
        name += ' ';
        name += *member.find("name")->stringValue();
      }
    }
    found.push_back(std::move(name));
  }
  return found;
}

TEST(BuildDynamicToolsArray, KeepsTheOrderOfToolsAndOfTheirNamespaces) {
  EXPECT_EQ(names({tool("z", "1"), tool("a", "2"), tool(std::nullopt, "y"), tool("z", "3"), tool(std::nullopt, "x"),
                   tool("a", "4")}),
            (std::vector<std::string>{"y", "x", "z 1 3", "a 2 4"}));
}

TEST(BuildDynamicToolsArray, TakesAnEmptyNamespaceForNone) {
  EXPECT_EQ(names({tool("", "a"), tool("ns", "b"), tool(std::nullopt, "c")}),
            (std::vector<std::string>{"a", "c", "ns b"}));
}

TEST(BuildDynamicToolsArray, ComparesNamespacesExactly) {
  EXPECT_EQ(names({tool("ns", "a"), tool("NS", "b"), tool(" ns", "c"), tool(" ", "d")}),
            (std::vector<std::string>{"ns a", "NS b", " ns c", "  d"}));
}

TEST(BuildDynamicToolsArray, KeepsToolsOfOneName) {
  EXPECT_EQ(names({tool(std::nullopt, "a"), tool(std::nullopt, "a"), tool("ns", "a"), tool("ns", "a")}),
            (std::vector<std::string>{"a", "a", "ns a a"}));
}

}  // namespace
