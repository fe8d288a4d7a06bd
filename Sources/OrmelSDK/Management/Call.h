#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Coding/RecordDescription.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Management/CallPerformer.h"

// The vocabulary in which management calls are declared, one function each:
//
//   Call<ThreadReadResponse> readThread(const std::string& threadID, const ReadThreadParams& params) {
//     return {"thread/read", callParams({{"threadId", threadID}}, params)};
//   }
//
// Its arguments are those of the operation of the same name, which performs it. An object whose operation has another
// form has a call of its own. The params without required members are `coding::encodeParams(params)`, an empty object
// that is always sent is `callParams({})`, and a call that is sent without params says so: `withoutParams`.
namespace ormel::detail {

/// A management call as it goes out, and the record that comes back. It does not depend on who performs it.
template <typename Record>
struct Call {
  std::string_view method;
  /// Absent if the call is sent without params.
  std::optional<JSONValue> params;
};

/// A call of which only the success is told. Its reply must be such a record all the same.
template <typename Record>
struct DroppedCall : Call<Record> {};

/// A notification, which nobody answers.
struct NotificationCall {
  std::string_view method;
  JSONValue params;
};

/// Stands in for the params of a call that has none.
inline constexpr std::nullopt_t withoutParams = std::nullopt;

/// A list, map or record among the required members.
template <typename Value>
JSONValue argument(const Value& value) {
  return coding::Codec<Value>::encode(value);
}

/// Params whose required members go ahead of what the table of the optional ones writes.
template <typename Params>
JSONValue callParams(std::initializer_list<JSONMemberInit> required, const Params& params) {
  std::vector<JSONMemberInit> members(required);
  coding::encodeMembers(descriptionOf(coding::Coded<Params>()), &params, members);
  return JSONValue::object(members);
}

inline JSONValue callParams(std::initializer_list<JSONMemberInit> required) { return JSONValue::object(required); }

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
