#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Management/CallPerformer.h"

namespace ormel::detail {

/// A management call as it goes out, and the record that comes back. Who performs it does not matter to it.
template <typename Record>
struct Call {
  std::string_view method;
  /// Absent if the call is sent without params.
  std::optional<JSONValue> params;
};

/// A call of which only the success is told. Its reply must be such a record all the same.
template <typename Record>
struct DroppedCall : Call<Record> {};

template <typename Record>
Task<Record> perform(std::shared_ptr<CallPerformer> performer, Call<Record> call) {
  return performFor<Record>(std::move(performer), std::string(call.method), std::move(call.params));
}

template <typename Record>
Task<void> drop(Task<Record> performing) {
  co_await std::move(performing);
}

template <typename Record>
Task<void> perform(std::shared_ptr<CallPerformer> performer, DroppedCall<Record> call) {
  return drop(performFor<Record>(std::move(performer), std::string(call.method), std::move(call.params)));
}

}  // namespace ormel::detail
