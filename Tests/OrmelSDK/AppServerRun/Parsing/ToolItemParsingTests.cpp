#include "OrmelSDK/AppServerRun/Parsing/ToolItemParsing.h"

#include <gtest/gtest.h>

#include "Support/ParsedItems.h"

namespace {

using namespace ormel;
using tests::parsedAs;

TEST(ParseCommandExecution, ReadsEveryField) {
  const auto item = parsedAs<CommandExecutionItem>(R"({"type":"commandExecution","id":"c","command":"ls","cwd":"/w",
      "processId":"p","process_id":"x","commandActions":[{"a":1},2],"command_actions":[],"aggregatedOutput":"o",
      "exitCode":3,"status":"completed","durationMs":4,"duration_ms":5})");
  EXPECT_EQ(item, (CommandExecutionItem{"c",
                                        "ls",
                                        "/w",
                                        "p",
                                        {JSONValue::decode(R"({"a":1})"), JSONValue(2)},
                                        "o",
                                        3,
                                        CommandExecutionStatus::completed,
                                        4}));
}

TEST(ParseCommandExecution, TakesDefaultsForWhatIsMissingOrMalformed) {
  const CommandExecutionItem expected{"c", "", "", {}, {}, "", {}, CommandExecutionStatus::failed, {}};
  EXPECT_EQ(parsedAs<CommandExecutionItem>(R"({"type":"commandExecution","id":"c"})"), expected);
  EXPECT_EQ(parsedAs<CommandExecutionItem>(R"({"type":"commandExecution","id":"c","command":1,"cwd":[],"processId":5,
      "commandActions":{},"aggregatedOutput":null,"exitCode":1.5,"status":7,"durationMs":"4"})"),
            expected);
  EXPECT_EQ(parsedAs<CommandExecutionItem>(R"({"type":"commandExecution","id":"c","aggregated_output":"x",
      "exit_code":1})"),
            expected);
}

TEST(ParseCommandExecution, ReadsTheOtherSpellingWhenTheFirstIsMissingOrOfAnotherType) {
  const auto item = parsedAs<CommandExecutionItem>(R"({"type":"commandExecution","id":"c","processId":7,
      "process_id":"p","command_actions":[1],"durationMs":null,"duration_ms":5})");
  EXPECT_EQ(item.processID, "p");
  EXPECT_EQ(item.commandActions, std::vector<JSONValue>{JSONValue(1)});
  EXPECT_EQ(item.durationMilliseconds, 5);
}

TEST(ParseFileChange, ReadsChangesOfEveryKind) {
  const auto item = parsedAs<FileChangeItem>(R"({"type":"fileChange","id":"f","status":"declined","changes":[
      {"path":"a","kind":"add"},{"path":"b","kind":{"type":"delete"}},{"path":"c","kind":"update"},
      {"path":"d"},{"path":"e","kind":"ADD"},{"path":"f","kind":{"type":5}},{"path":"g","kind":{"type":"move"}},
      {"path":"h","kind":9},{"kind":"add"},{"path":1},"i"]})");
  using enum PatchChangeKind;
  EXPECT_EQ(item, (FileChangeItem{"f",
                                  {{"a", add},
                                   {"b", delete_},
                                   {"c", update},
                                   {"d", update},
                                   {"e", update},
                                   {"f", update},
                                   {"g", update},
                                   {"h", update}},
                                  PatchApplyStatus::declined}));
}

TEST(ParseFileChange, TakesDefaultsForWhatIsMissingOrMalformed) {
  const FileChangeItem expected{"f", {}, PatchApplyStatus::failed};
  EXPECT_EQ(parsedAs<FileChangeItem>(R"({"type":"fileChange","id":"f"})"), expected);
  EXPECT_EQ(parsedAs<FileChangeItem>(R"({"type":"fileChange","id":"f","changes":"x","status":[]})"), expected);
}

TEST(ParseMcpToolCall, ReadsEveryField) {
  const auto item = parsedAs<McpToolCallItem>(R"({"type":"mcpToolCall","id":"m","server":"s","tool":"t",
      "status":"In_Progress","arguments":[1],"appContext":{"connector_id":"c","resourceUri":"r"},
      "result":{"content":[1,{}],"structuredContent":2,"structured_content":3,"_meta":4},"error":{"message":"e"},
      "mcpAppResourceUri":"u","mcp_app_resource_uri":"x","pluginId":"p","durationMs":5,"duration_ms":6,
      "progressMessage":"g","progress_message":"x"})");
  McpToolCallAppContext context;
  context.connectorID = "c";
  context.resourceURI = "r";
  EXPECT_EQ(item, (McpToolCallItem{"m", "s", "t", JSONValue::decode("[1]"), "u", context, "p",
                                   McpToolCallResult{{JSONValue(1), JSONValue::object()}, JSONValue(2), JSONValue(4)},
                                   McpToolCallError{"e"}, McpToolCallStatus::inProgress, 5, "g"}));
}

TEST(ParseMcpToolCall, TakesDefaultsForWhatIsMissingOrMalformed) {
  McpToolCallItem expected;
  expected.id = "m";
  expected.server = "mcp";
  expected.tool = "tool";
  expected.arguments = JSONValue::object();
  expected.status = McpToolCallStatus::failed;
  EXPECT_EQ(parsedAs<McpToolCallItem>(R"({"type":"mcpToolCall","id":"m"})"), expected);
  EXPECT_EQ(parsedAs<McpToolCallItem>(R"({"type":"mcpToolCall","id":"m","server":1,"tool":null,"status":{},
      "appContext":{"linkId":"l"},"result":[],"error":{"message":1},"mcpAppResourceUri":2,"pluginId":3,
      "durationMs":1.5,"progressMessage":4,"plugin_id":"p"})"),
            expected);
  EXPECT_EQ(parsedAs<McpToolCallItem>(R"({"type":"mcpToolCall","id":"m","appContext":null,"result":null,
      "error":"e","durationMs":1e300})"),
            expected);
}

TEST(ParseMcpToolCall, KeepsArgumentsAndStructuredContentThatAreNull) {
  const auto item = parsedAs<McpToolCallItem>(R"({"type":"mcpToolCall","id":"m","arguments":null,
      "result":{"structuredContent":null,"structured_content":1,"_meta":null}})");
  EXPECT_EQ(item.arguments, JSONValue());
  EXPECT_EQ(item.result, (McpToolCallResult{{}, JSONValue(), JSONValue()}));
}

TEST(ParseMcpToolCall, ReadsTheOtherSpellings) {
  const auto item = parsedAs<McpToolCallItem>(R"({"type":"mcpToolCall","id":"m","mcp_app_resource_uri":"u",
      "duration_ms":6.0,"progress_message":"g","result":{"content":{},"structured_content":3}})");
  EXPECT_EQ(item.mcpAppResourceURI, "u");
  EXPECT_EQ(item.durationMilliseconds, 6);
  EXPECT_EQ(item.progressMessage, "g");
  EXPECT_EQ(item.result, (McpToolCallResult{{}, JSONValue(3), {}}));
}

TEST(ParseMcpToolCall, TakesTheResourceOfItsAppWhenItNamesNone) {
  const auto item = parsedAs<McpToolCallItem>(
      R"({"type":"mcpToolCall","id":"m","appContext":{"connectorId":"c","resource_uri":"r"}})");
  EXPECT_EQ(item.mcpAppResourceURI, "r");
}

TEST(ParseDynamicToolCall, ReadsEveryField) {
  const auto item = parsedAs<DynamicToolCallItem>(R"({"type":"dynamicToolCall","id":"d","namespace":"n","tool":"t",
      "arguments":"a","status":"COMPLETED","contentItems":[{"type":"inputText","text":"x"},{"type":"inputText"},
      {"type":"inputSmell"},7,{"type":"inputImage","imageUrl":"i"}],"content_items":[],"success":true,"durationMs":5})");
  EXPECT_EQ(item, (DynamicToolCallItem{"d",
                                       "n",
                                       "t",
                                       JSONValue("a"),
                                       DynamicToolCallStatus::completed,
                                       {{DynamicToolCallOutputContentItem::inputText("x"),
                                         DynamicToolCallOutputContentItem::inputImage("i")}},
                                       5,
                                       true}));
}

TEST(ParseDynamicToolCall, TakesDefaultsForWhatIsMissingOrMalformed) {
  const DynamicToolCallItem expected{"d", {}, "tool", JSONValue::object(), DynamicToolCallStatus::failed, {}, {}, {}};
  EXPECT_EQ(parsedAs<DynamicToolCallItem>(R"({"type":"dynamicToolCall","id":"d"})"), expected);
  EXPECT_EQ(parsedAs<DynamicToolCallItem>(R"({"type":"dynamicToolCall","id":"d","namespace":1,"tool":2,"status":3,
      "contentItems":{},"success":1,"durationMs":1.5})"),
            expected);
}

TEST(ParseDynamicToolCall, ReadsTheOtherSpellingsAndKeepsAnEmptyList) {
  const auto item = parsedAs<DynamicToolCallItem>(R"({"type":"dynamicToolCall","id":"d","contentItems":null,
      "content_items":[5],"duration_ms":6,"success":false})");
  ASSERT_TRUE(item.contentItems);
  EXPECT_TRUE(item.contentItems->empty());
  EXPECT_EQ(item.durationMilliseconds, 6);
  EXPECT_EQ(item.success, false);
}

}  // namespace
