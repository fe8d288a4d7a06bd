#include "OrmelSDK/AppServerRun/TurnRun/StreamCompletion.h"

#include <string>
#include <string_view>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

/// An operation has to end also where there is no memory for its error: with that failure.
template <typename Make>
std::exception_ptr errorOf(Make make) noexcept {
  try {
    return std::make_exception_ptr(make());
  } catch (...) {
    return std::current_exception();
  }
}

std::exception_ptr streamErrorOf(std::string_view message, bool isRetryable = false,
                                 std::shared_ptr<const FailureCause> cause = nullptr) noexcept {
  return errorOf([&] {
    return isRetryable ? ThreadRunError::passing(std::string(message), std::move(cause))
                       : ThreadRunError::streamError(std::string(message), std::move(cause));
  });
}

}  // namespace

StreamCompletion StreamCompletion::aborted() { return failed({OrmelProcessError::aborted().description(), true}); }

std::exception_ptr StreamCompletion::streamError() const noexcept {
  if (kind_ != Kind::failed) return nullptr;
  return failure_.aborted ? errorOf([] { return OrmelProcessError::aborted(); })
                          : streamErrorOf(failure_.message, failure_.retryable, failure_.cause);
}

std::exception_ptr StreamCompletion::waiterError() const noexcept {
  return kind_ == Kind::finished ? streamErrorOf("Stream finished") : streamError();
}

std::exception_ptr StreamCompletion::senderError() const noexcept {
  return kind_ == Kind::finished ? streamErrorOf("Ormel app-server stream already finished") : streamError();
}

}  // namespace ormel::detail
