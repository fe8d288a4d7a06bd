#include "OrmelSDK/AppServerRun/TurnRun/StreamCompletion.h"

#include <utility>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

std::exception_ptr streamErrorOf(std::string message, bool isRetryable = false) {
  return std::make_exception_ptr(isRetryable ? ThreadRunError::passing(std::move(message))
                                             : ThreadRunError::streamError(std::move(message)));
}

}  // namespace

StreamCompletion StreamCompletion::aborted() { return failed({OrmelProcessError::aborted().description(), true}); }

std::exception_ptr StreamCompletion::streamError() const {
  if (kind_ != Kind::failed) return nullptr;
  if (failure_.aborted) return std::make_exception_ptr(OrmelProcessError::aborted());
  return streamErrorOf(failure_.message, failure_.retryable);
}

std::exception_ptr StreamCompletion::waiterError() const {
  return kind_ == Kind::finished ? streamErrorOf("Stream finished") : streamError();
}

std::exception_ptr StreamCompletion::senderError() const {
  return kind_ == Kind::finished ? streamErrorOf("Ormel app-server stream already finished") : streamError();
}

}  // namespace ormel::detail
