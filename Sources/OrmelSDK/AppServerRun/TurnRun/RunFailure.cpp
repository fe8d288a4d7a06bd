#include "OrmelSDK/AppServerRun/TurnRun/RunFailure.h"

#include "OrmelSDK/AppServerRun/Framing/AppServerRunSupport.h"
#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"

namespace ormel::detail {

bool isAbortError(const std::exception& error) noexcept {
  if (dynamic_cast<const CancelledError*>(&error)) return true;
  const auto* ofProcess = dynamic_cast<const OrmelProcessError*>(&error);
  return ofProcess && ofProcess->kind() == OrmelProcessError::Kind::aborted;
}

RunFailure describedFailure(const std::exception_ptr& error) {
  try {
    std::rethrow_exception(error);
  } catch (const Error& known) {
    return {appServerProtocolErrorDescription(known), isAbortError(known), known.isRetryable(), known.cause()};
  } catch (const std::exception& known) {
    return {appServerProtocolErrorDescription(known), isAbortError(known)};
  } catch (...) {
    return {"Unknown failure", false};
  }
}

}  // namespace ormel::detail
