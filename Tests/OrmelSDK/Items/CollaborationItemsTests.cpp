#include "OrmelSDK/Items/CollaborationItems.h"

#include <gtest/gtest.h>

namespace {

using namespace ormel;

TEST(SubAgentActivityKind, TellsTheWordsThatItDoesNotKnow) {
  EXPECT_FALSE(SubAgentActivityKind::completed.isUnknown());
  EXPECT_TRUE(SubAgentActivityKind("Started").isUnknown());
  EXPECT_TRUE(SubAgentActivityKind("").isUnknown());
}

}  // namespace
