#include "OrmelSDK/Events/WarningEvents.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace ormel;

TEST(AuthRecoveryEvent, HasABeginningAndAnEndThatAreRecordsOfIts) {
  const AuthRecoveryStartedEvent started{{"t", "u", "p", "m"}};
  EXPECT_EQ(started, (AuthRecoveryStartedEvent{{"t", "u", "p", "m"}}));
  EXPECT_FALSE(started == (AuthRecoveryStartedEvent{{"t", "u", "p", "other"}}));
  std::ostringstream stream;
  stream << AuthRecoveryCompletedEvent{};
  EXPECT_TRUE(stream.str().starts_with("AuthRecoveryEvent {"));
}

}  // namespace
