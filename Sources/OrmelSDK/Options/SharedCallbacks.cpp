#include "OrmelSDK/Options/SharedCallbacks.h"

#include <functional>
#include <utility>

#include "OrmelSDK/Concurrency/ApplicationObject.h"

namespace ormel::detail {

namespace {

template <typename Result, typename... Args>
void share(std::function<Result(Args...)>& callback) {
  if (!callback) return;
  callback = [shared = makeApplicationObject<std::function<Result(Args...)>>(std::move(callback))](Args... args) {
    return (*shared)(std::forward<Args>(args)...);
  };
}

}  // namespace

void shareCallbacks(OrmelOptions& options) {
  share(options.executableTrustAssessment);
  share(options.trustCommandRunner);
  share(options.problemHandler);
}

}  // namespace ormel::detail
