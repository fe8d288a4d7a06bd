#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Management/ReplyPlace.h"

namespace ormel::detail {

/// A way to the server for management calls: a process for each call, or one that is kept.
///
/// *Thread safety*: may be called from any threads.
class CallPerformer {
 public:
  virtual ~CallPerformer() = default;

  /// Sends the request and decodes its result into the place. The caller holds the performer until the task has ended.
  virtual Task<void> perform(std::string method, std::optional<JSONValue> params, ReplyPlace reply) = 0;
};

/// The same, with the record as the task's value.
template <typename Record>
Task<Record> performFor(std::shared_ptr<CallPerformer> performer, std::string method, std::optional<JSONValue> params) {
  std::optional<Record> record;
  auto performing = performer->perform(std::move(method), std::move(params), ReplyPlace(record));
  co_await std::move(performing);
  co_return *std::move(record);
}

}  // namespace ormel::detail
