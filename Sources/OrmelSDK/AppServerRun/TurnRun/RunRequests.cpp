#include "OrmelSDK/AppServerRun/TurnRun/RunRequests.h"

#include <exception>
#include <limits>
#include <utility>

#include "OrmelSDK/Base/FatalError.h"

namespace ormel::detail {

namespace {

void requireFirst(bool isFirst) {
  if (!isFirst) fatalError("a request of a run was ended twice");
}

}  // namespace

void PendingResponse::resume(const JSONValue& result) const { requireFirst(continuation.resume(result)); }

void PendingResponse::fail(const std::exception_ptr& error) const { requireFirst(continuation.fail(error)); }

AppServerRequestID RunRequests::takeID() {
  if (nextRequestID_ == std::numeric_limits<std::int64_t>::max()) fatalError("a run has used up its request ids");
  return AppServerRequestID::integer(nextRequestID_++);
}

void RunRequests::add(const AppServerRequestID& id, PendingResponse request) {
  pendingResponses_.emplace(id, std::move(request));
}

std::optional<PendingResponse> RunRequests::remove(const AppServerRequestID& id) {
  auto node = pendingResponses_.extract(id);
  if (node.empty()) return std::nullopt;
  node.mapped().timeoutTask.cancel();
  return std::move(node.mapped());
}

bool RunRequests::complete(const AppServerRequestID& id, const JSONValue& result) {
  const auto request = remove(id);
  if (request) request->resume(result);
  return request.has_value();
}

bool RunRequests::fail(const AppServerRequestID& id, const std::exception_ptr& error) {
  const auto request = remove(id);
  if (request) request->fail(error);
  return request.has_value();
}

// One at a time and in its place, so that no memory is needed for it. No waiter goes on within its `fail`.
void RunRequests::release(const StreamCompletion& completion) noexcept {
  const std::exception_ptr error = completion.waiterError();
  const bool alsoSurvivors = completion.kind() == StreamCompletion::Kind::failed;
  for (auto entry = pendingResponses_.begin(); entry != pendingResponses_.end();) {
    const auto present = entry++;
    if (present->second.survivesNormalStreamCompletion && !alsoSurvivors) continue;
    auto request = pendingResponses_.extract(present);
    request.mapped().timeoutTask.cancel();
    request.mapped().fail(error);
  }
}

}  // namespace ormel::detail
