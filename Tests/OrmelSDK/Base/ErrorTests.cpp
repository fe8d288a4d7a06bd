#include "OrmelSDK/Base/Error.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"

namespace ormel {
namespace {

TEST(Error, TellsWhetherItIsAnAbortAndWhetherToTryAgain) {
  const struct {
    std::shared_ptr<const Error> error;
    bool isAborted;
    bool isRetryable;
  } rows[] = {
      {std::make_shared<Error>("x"), false, false},
      {std::make_shared<OrmelProcessError>(OrmelProcessError::aborted()), true, false},
      {std::make_shared<CancelledError>(), true, false},
      {std::make_shared<TimeoutError>(std::chrono::seconds(1)), false, true},
      {std::make_shared<ResourceExhaustedError>("threads", "x"), false, true},
      {std::make_shared<OrmelProcessError>(OrmelProcessError::exited("exit status 1", "x")), false, true},
      {std::make_shared<OrmelProcessError>(OrmelProcessError::executableNotFound("x")), false, false},
      {std::make_shared<OrmelProcessError>(OrmelProcessError::spawnFailed("x")), false, false},
      {std::make_shared<OrmelProcessError>(OrmelProcessError::untrustedExecutable("x", "y")), false, false},
      {std::make_shared<ThreadRunError>(ThreadRunError::turnFailed("x")), false, false},
      {std::make_shared<ThreadRunError>(ThreadRunError::streamError("x")), false, false},
      {std::make_shared<ThreadRunError>(ThreadRunError::passing("x")), false, true},
      {std::make_shared<AppServerRPCError>(1, "x"), false, false},
      {std::make_shared<AbandonedError>(), false, false},
      {std::make_shared<WouldDeadlockError>(), false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.error->what());
    EXPECT_EQ(row.error->isAborted(), row.isAborted);
    EXPECT_EQ(row.error->isRetryable(), row.isRetryable);
  }
  EXPECT_EQ(ThreadRunError::passing("x"), ThreadRunError::streamError("x"));
}

}  // namespace
}  // namespace ormel
