#include "OrmelSDK/Base/ThreadRunError.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using ormel::ThreadRunError;

TEST(ThreadRunError, DescribesItselfByItsMessageAlone) {
  const auto failed = ThreadRunError::turnFailed("no quota left");
  EXPECT_EQ(failed.kind(), ThreadRunError::Kind::turnFailed);
  EXPECT_STREQ(failed.what(), "no quota left");
  const auto broken = ThreadRunError::streamError("Stream finished");
  EXPECT_EQ(broken.kind(), ThreadRunError::Kind::streamError);
  EXPECT_STREQ(broken.what(), "Stream finished");
  EXPECT_EQ(ThreadRunError::streamError("").description(), "");
}

TEST(ThreadRunError, KeepsAMessageWithANullCharacterWhole) {
  const std::string message("a\0b", 3);
  EXPECT_EQ(ThreadRunError::streamError(message).description(), message);
}

TEST(ThreadRunError, IsEqualInCaseAndMessage) {
  EXPECT_EQ(ThreadRunError::turnFailed("a"), ThreadRunError::turnFailed("a"));
  EXPECT_FALSE(ThreadRunError::turnFailed("a") == ThreadRunError::turnFailed("b"));
  EXPECT_FALSE(ThreadRunError::turnFailed("a") == ThreadRunError::streamError("a"));
}

TEST(ThreadRunError, IsCaughtAsAnErrorOfTheLibrary) {
  EXPECT_THROW(throw ThreadRunError::streamError("a"), ormel::Error);
}

}  // namespace
