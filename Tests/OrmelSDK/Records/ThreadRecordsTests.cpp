#include "OrmelSDK/Records/ThreadRecords.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>

#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"
#include "Support/CodingChecks.h"

namespace {

using namespace ormel;

constexpr std::string_view recordedItem = R"({"type":"reasoning","id":"i","summary":["s"],"content":[]})";
constexpr std::string_view status = R"({"type":"active","activeFlags":["waiting"]})";
constexpr std::string_view gitInfo = R"({"sha":"abc","branch":"main","originUrl":"ssh://host/path"})";
constexpr std::string_view turnError =
    R"({"message":"m","ormelErrorInfo":{"kind":"overload"},"additionalDetails":"more"})";

std::string turn() {
  return R"({"id":"u","items":[)" + std::string(recordedItem) +
         R"(],"itemsView":"summary","status":"failed","error":)" + std::string(turnError) +
         R"(,"startedAt":1.5,"completedAt":2.5,"durationMs":1000})";
}

std::string thread() {
  return R"({"id":"t","sessionId":"s","forkedFromId":"f","parentThreadId":"p","preview":"hello","ephemeral":true,)"
         R"("modelProvider":"mp","createdAt":1.5,"updatedAt":2.5,"recencyAt":3.5,"status":)" +
         std::string(status) +
         R"(,"path":"/t.jsonl","cwd":"/w","cliVersion":"1.2","source":{"custom":1},"threadSource":"user",)"
         R"("agentNickname":"n","agentRole":"r","gitInfo":)" +
         std::string(gitInfo) + R"(,"name":"N","turns":[)" + turn() + "]}";
}

TEST(ThreadTurn, NamesThePathToAFailure) {
  try {
    (void)tests::decoded<ThreadReadResponse>(
        R"({"thread":{"id":"t","turns":[{"id":"u","status":"failed"},{"id":"v","status":"failed","error":{}}]}})");
    ADD_FAILURE() << "decoded";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingError::Kind::keyNotFound);
    EXPECT_EQ(error.subject(), "message");
    EXPECT_EQ(error.context().codingPath, (std::vector<std::string>{"thread", "turns", "Index 1", "error"}));
  }
}

TEST(ThreadRecords, ReadThousandsOfThreadsOfAPage) {
  constexpr int count = 5000;
  std::string text = R"({"data":[)";
  for (int i = 0; i < count; ++i) text += (i > 0 ? "," : "") + thread();
  const auto read = tests::decoded<ThreadListResponse>(text + "]}");
  ASSERT_EQ(read.data.size(), static_cast<std::size_t>(count));
  EXPECT_EQ(read.data.back(), tests::decoded<OrmelThreadRecord>(thread()));
  EXPECT_EQ(read.nextCursor, std::nullopt);
}

TEST(ThreadRecords, KeepASourceAsDeepAsCanBeRead) {
  constexpr std::size_t depth = JSONValue::maximumDecodingDepth - 1;
  const std::string source = std::string(depth, '[') + std::string(depth, ']');
  const auto record = tests::decoded<OrmelThreadRecord>(R"({"id":"t","source":)" + source + "}");
  EXPECT_EQ(record.source, JSONValue::decode(source));
  EXPECT_EQ(decode<OrmelThreadRecord>(encode(record)), record);
}

TEST(ThreadRecords, StreamInOneReadableLine) {
  std::ostringstream stream;
  stream << OrmelThreadStatus{"idle", {"a"}} << ' ' << ThreadTurnStatus::inProgress << ' ' << ConfigWriteAck();
  EXPECT_EQ(stream.str(),
            R"(OrmelThreadStatus {"type":"idle","activeFlags":["a"]} ThreadTurnStatus "inProgress" ConfigWriteAck {})");
}

}  // namespace
