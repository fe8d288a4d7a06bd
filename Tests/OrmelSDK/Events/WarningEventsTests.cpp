#include "OrmelSDK/Events/WarningEvents.h"

#include <gtest/gtest.h>

#include <sstream>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;

constexpr std::string_view range = R"({"start":{"line":1,"column":2},"end":{"line":3,"column":4}})";

TEST(WarningEvents, FollowTheirTables) {
  tests::checkRecord<ThreadWarningEvent>(R"({"thread_id":"t","message":"m"})");
  tests::checkRecord<AuthRecoveryEvent>(R"({"thread_id":"t","turn_id":"u","provider":"p","message":"m"})");
  tests::checkRecord<DeprecationNoticeEvent>(R"({"summary":"s","details":"d"})");
  tests::checkRecord<TextPosition>(R"({"line":1,"column":2})");
  tests::checkRecord<TextRange>(range);
  tests::checkRecord<ConfigWarningEvent>(R"({"summary":"s","details":"d","path":"/p","range":)" + std::string(range) +
                                         "}");
}

TEST(WarningEvents, AreWrittenWithoutWhatIsAbsent) {
  tests::expectWritten(ThreadWarningEvent{{}, "m"}, R"({"message":"m"})");
  tests::expectWritten(ThreadWarningEvent{"t", "m"}, R"({"thread_id":"t","message":"m"})");
  tests::expectWritten(AuthRecoveryEvent{"t", "u", "p", "m"},
                       R"({"thread_id":"t","turn_id":"u","provider":"p","message":"m"})");
  tests::expectWritten(DeprecationNoticeEvent{"s", {}}, R"({"summary":"s"})");
  tests::expectWritten(ConfigWarningEvent{"s", {}, {}, {}}, R"({"summary":"s"})");
  tests::expectWritten(TextRange{{1, 2}, {3, 4}}, range);
}

TEST(ConfigWarningEvent, NamesThePathToWhatIsMissing) {
  try {
    (void)decoded<ConfigWarningEvent>(R"({"summary":"s","range":{"start":{"line":1},"end":{"line":3,"column":4}}})");
    ADD_FAILURE() << "decoded";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingError::Kind::keyNotFound);
    EXPECT_EQ(error.subject(), "column");
    EXPECT_EQ(error.context().codingPath, (std::vector<std::string>{"range", "start"}));
  }
}

TEST(AuthRecoveryEvent, HasABeginningAndAnEndThatAreRecordsOfIts) {
  const AuthRecoveryStartedEvent started{{"t", "u", "p", "m"}};
  EXPECT_EQ(started, (AuthRecoveryStartedEvent{{"t", "u", "p", "m"}}));
  EXPECT_FALSE(started == (AuthRecoveryStartedEvent{{"t", "u", "p", "other"}}));
  std::ostringstream stream;
  stream << AuthRecoveryCompletedEvent{};
  EXPECT_TRUE(stream.str().starts_with("AuthRecoveryEvent {"));
}

}  // namespace
