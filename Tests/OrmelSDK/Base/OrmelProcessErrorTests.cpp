#include "OrmelSDK/Base/OrmelProcessError.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using ormel::OrmelProcessError;

TEST(OrmelProcessError, DescribesTheCasesWithOneText) {
  EXPECT_STREQ(OrmelProcessError::unsupportedPlatform("plan9").what(), "Unsupported platform: plan9");
  EXPECT_STREQ(OrmelProcessError::executableNotFound("/x").what(), "Ormel executable not found: /x");
  EXPECT_STREQ(OrmelProcessError::childProcessMissingPipe("stdin").what(), "Child process has no stdin");
  EXPECT_STREQ(OrmelProcessError::invalidConfigOverride("not so").what(), "not so");
  EXPECT_STREQ(OrmelProcessError::spawnFailed("No such file").what(), "No such file");
}

TEST(OrmelProcessError, DescribesAnAbort) { EXPECT_STREQ(OrmelProcessError::aborted().what(), "Operation aborted"); }

TEST(OrmelProcessError, DescribesAnExitWithItsDetail) {
  EXPECT_STREQ(OrmelProcessError::exited("signal 9", "").what(), "Ormel process exited with signal 9");
  EXPECT_STREQ(OrmelProcessError::exited("status 3", " \n bad\nthing \r\n").what(),
               "Ormel process exited with status 3: bad\nthing");
}

TEST(OrmelProcessError, LeavesOutAStandardErrorOfOnlyLineFeeds) {
  EXPECT_STREQ(OrmelProcessError::exited("exit status 1", "\n\n\n").what(), "Ormel process exited with exit status 1");
}

TEST(OrmelProcessError, TellsTheUserTheSameThingForEveryReasonOfDistrust) {
  const auto error = OrmelProcessError::untrustedExecutable("/bin/ormel", "it is revoked");
  EXPECT_EQ(error.description(), OrmelProcessError::trustFailureRecoveryMessage());
  EXPECT_EQ(error.description(), OrmelProcessError::untrustedExecutable("/other", "").description());
  EXPECT_EQ(error.path(), "/bin/ormel");
  EXPECT_EQ(error.reason(), "it is revoked");
}

TEST(OrmelProcessError, TellsHowToReinstall) {
  const std::string message = OrmelProcessError::trustFailureRecoveryMessage();
  const std::string head = "macOS could not verify the Ormel CLI. Reinstall it with:\n\n";
  ASSERT_EQ(message.substr(0, head.size()), head);
  EXPECT_EQ(message.substr(head.size()), "curl -fsSL https://ormel.invalid/install.sh | sh");
}

TEST(OrmelProcessError, KeepsItsCaseAndPayload) {
  const auto exited = OrmelProcessError::exited("signal 9", "why\n");
  EXPECT_EQ(exited.kind(), OrmelProcessError::Kind::exited);
  EXPECT_EQ(exited.detail(), "signal 9");
  EXPECT_EQ(exited.stderr_(), "why\n");
  EXPECT_EQ(OrmelProcessError::executableNotFound("/x").text(), "/x");
  EXPECT_EQ(OrmelProcessError::aborted().kind(), OrmelProcessError::Kind::aborted);
}

TEST(OrmelProcessError, ComparesTheCaseAndThePayload) {
  EXPECT_EQ(OrmelProcessError::exited("a", "b"), OrmelProcessError::exited("a", "b"));
  EXPECT_NE(OrmelProcessError::exited("a", "b"), OrmelProcessError::exited("a", "b\n"));
  EXPECT_NE(OrmelProcessError::spawnFailed("a"), OrmelProcessError::invalidConfigOverride("a"));
  EXPECT_NE(OrmelProcessError::untrustedExecutable("p", "a"), OrmelProcessError::untrustedExecutable("p", "b"));
}

TEST(OrmelProcessError, IsCaughtAsAnErrorOfTheLibrary) {
  EXPECT_THROW(throw OrmelProcessError::aborted(), ormel::Error);
}

}  // namespace
