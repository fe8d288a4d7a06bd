#include "OrmelSDK/Items/CommandItems.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::checkRecord;
using tests::decoded;
using tests::expectWritten;
using tests::failureOf;

TEST(CommandExecutionItem, FollowsItsTable) {
  checkRecord<CommandExecutionItem>(
      R"({"id":"i","command":"ls","cwd":"/d","process_id":"1","command_actions":[{"type":"read"}],
          "aggregated_output":"out","exit_code":-1,"status":"completed","duration_ms":12})");
}

TEST(CommandExecutionItem, HasDefaultsForAllButItsEssence) {
  const auto item =
      decoded<CommandExecutionItem>(R"({"type":"command_execution","id":"c","command":"ls","status":"completed"})");
  EXPECT_EQ(item, (CommandExecutionItem{"c", "ls", "", {}, {}, "", {}, CommandExecutionStatus::completed, {}}));
  expectWritten(item, R"({"id":"c","command":"ls","cwd":"","command_actions":[],"aggregated_output":"",
                          "status":"completed"})");
}

TEST(CommandExecutionItem, IsWrittenInSnakeCaseAndWithoutAType) {
  expectWritten(
      CommandExecutionItem{"c", "ls", "/d", "1", {JSONValue()}, "out", 2, CommandExecutionStatus::inProgress, 3},
      R"({"id":"c","command":"ls","cwd":"/d","process_id":"1","command_actions":[null],
                    "aggregated_output":"out","exit_code":2,"status":"in_progress","duration_ms":3})");
}

TEST(CommandExecutionItem, PrefersSnakeCaseAndDoesNotReadEveryCamelCase) {
  const auto item = decoded<CommandExecutionItem>(
      R"({"id":"c","command":"ls","status":"completed","process_id":"snake","processId":"camel","exit_code":1,
          "exitCode":2,"aggregated_output":"snake","aggregatedOutput":"camel","commandActions":[1],"durationMs":5})");
  EXPECT_EQ(item.processID, "snake");
  EXPECT_EQ(item.exitCode, 1);
  EXPECT_EQ(item.aggregatedOutput, "snake");
  EXPECT_TRUE(item.commandActions.empty());
  EXPECT_FALSE(item.durationMilliseconds.has_value());
}

TEST(CommandExecutionItem, NeedsAWordForItsStatus) {
  EXPECT_EQ(failureOf<CommandExecutionItem>(R"({"id":"c","command":"ls"})"),
            "No value is associated with the key 'status'.");
  EXPECT_EQ(failureOf<CommandExecutionItem>(R"({"id":"c","command":"ls","status":1})"),
            "Expected String but found a number.");
}

TEST(CommandExecutionStatus, ReadsSpellingsOfItsWordsAndTakesTheRestForFailed) {
  using enum CommandExecutionStatus;
  tests::checkWords<CommandExecutionStatus>(
      {{inProgress, "in_progress"}, {completed, "completed"}, {failed, "failed"}, {declined, "declined"}});
  tests::checkTolerance<CommandExecutionStatus>({{"inProgress", inProgress},
                                                 {"In-Progress", inProgress},
                                                 {" in_progress\n", inProgress},
                                                 {"COMPLETED", completed},
                                                 {"Declined", declined},
                                                 {"weird", failed},
                                                 {"running", failed},
                                                 {"", failed}});
}

}  // namespace
