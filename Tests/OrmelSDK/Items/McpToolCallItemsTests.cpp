#include "OrmelSDK/Items/McpToolCallItems.h"

#include <gtest/gtest.h>

#include <utility>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::checkRecord;
using tests::decoded;
using tests::expectWritten;
using tests::failureOf;

constexpr const char* wholeItem =
    R"({"id":"i","server":"s","tool":"t","arguments":{"a":1},"mcpAppResourceURI":"u","appContext":{"connectorId":"c"},
        "pluginId":"p","result":{"content":[1]},"error":{"message":"m"},"status":"completed","duration_ms":1,
        "progress_message":"half"})";

TEST(McpToolCallItems, FollowTheirTables) {
  checkRecord<McpToolCallResult>(R"({"content":[1,{"a":null}],"structured_content":{"b":1},"_meta":[2]})");
  checkRecord<McpToolCallError>(R"({"message":"m"})");
  checkRecord<McpToolCallAppContext>(R"({"connectorId":"c","linkId":"l","resourceUri":"r","appName":"n",
                                         "templateId":"t","actionName":"a"})");
  checkRecord<McpToolCallItem>(wholeItem);
}

TEST(McpToolCallItem, IsWrittenInMixedSpellingsAndWithoutAType) {
  expectWritten(decoded<McpToolCallItem>(wholeItem),
                R"({"id":"i","server":"s","tool":"t","arguments":{"a":1},"mcpAppResourceUri":"u",
                    "appContext":{"connectorId":"c"},"pluginId":"p","result":{"content":[1]},"error":{"message":"m"},
                    "status":"completed","duration_ms":1,"progress_message":"half"})");
  expectWritten(decoded<McpToolCallItem>(R"({"id":"i","server":"s","tool":"t","arguments":null,"status":"failed"})"),
                R"({"id":"i","server":"s","tool":"t","arguments":null,"status":"failed"})");
}

TEST(McpToolCallItem, TriesItsSpellingsInOrder) {
  const auto item = decoded<McpToolCallItem>(
      R"({"id":"i","server":"s","tool":"t","arguments":1,"status":"failed","mcp_app_resource_uri":"3",
          "mcpAppResourceUri":"2","mcpAppResourceURI":"1","durationMs":2,"duration_ms":1,"progressMessage":"2",
          "progress_message":"1"})");
  EXPECT_EQ(item.mcpAppResourceURI, "1");
  EXPECT_EQ(item.durationMilliseconds, 1);
  EXPECT_EQ(item.progressMessage, "1");
}

TEST(McpToolCallItem, DoesNotReadSnakeCaseForEveryKey) {
  const auto item = decoded<McpToolCallItem>(R"({"id":"i","server":"s","tool":"t","arguments":1,"status":"failed",
                                                 "plugin_id":"p","app_context":{"connectorId":"c"}})");
  EXPECT_FALSE(item.pluginID.has_value());
  EXPECT_FALSE(item.appContext.has_value());
}

TEST(McpToolCallResult, ReadsSnakeCaseFirstAndWritesCamelCase) {
  const auto result = decoded<McpToolCallResult>(R"({"content":[],"structuredContent":2,"structured_content":1})");
  EXPECT_EQ(result, (McpToolCallResult{{}, JSONValue(1), {}}));
  expectWritten(result, R"({"content":[],"structuredContent":1})");
  expectWritten(McpToolCallResult{{}, {}, JSONValue("m")}, R"({"content":[],"_meta":"m"})");
}

TEST(McpToolCallAppContext, PrefersAndWritesCamelCase) {
  const auto context = decoded<McpToolCallAppContext>(
      R"({"connector_id":"0","connectorId":"1","link_id":"0","linkId":"2","resource_uri":"3","app_name":"4",
          "template_id":"5","action_name":"6"})");
  EXPECT_EQ(context, (McpToolCallAppContext{"1", "2", "3", "4", "5", "6"}));
  expectWritten(context, R"({"connectorId":"1","linkId":"2","resourceUri":"3","appName":"4","templateId":"5",
                             "actionName":"6"})");
}

TEST(McpToolCallStatus, ReadsSpellingsOfItsWordsAndTakesTheRestForFailed) {
  using enum McpToolCallStatus;
  tests::checkWords<McpToolCallStatus>({{inProgress, "in_progress"}, {completed, "completed"}, {failed, "failed"}});
  tests::checkTolerance<McpToolCallStatus>(
      {{"inProgress", inProgress}, {" Completed", completed}, {"declined", failed}, {"weird", failed}});
}

}  // namespace
