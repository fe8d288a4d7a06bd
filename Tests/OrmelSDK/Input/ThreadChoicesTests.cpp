#include "OrmelSDK/Input/ThreadChoices.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace ormel;

TEST(WireEnumerations, StreamInOneReadableLine) {
  std::ostringstream stream;
  stream << ApprovalsReviewer::autoReview << ' ' << ServiceTier::flex;
  EXPECT_EQ(stream.str(), R"(ApprovalsReviewer "auto_review" ServiceTier "flex")");
}

}  // namespace
