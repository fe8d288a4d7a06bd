#pragma once

#include <concepts>
#include <optional>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Where the result of a call goes, and the record that it has to be. It lets all calls share one compiled road, which
/// knows no record.
///
/// *Object lifetimes*: refers to the place, which must outlive the call.
class ReplyPlace {
 public:
  /// The result is kept as it came.
  explicit ReplyPlace(std::optional<JSONValue>& place) noexcept
      : place_(&place), decode_([](const JSONValue& result, void* into) {
          static_cast<std::optional<JSONValue>*>(into)->emplace(result);
        }) {}

  template <typename Record>
  explicit ReplyPlace(std::optional<Record>& place) noexcept
      : place_(&place), decode_([](const JSONValue& result, void* into) {
          static_cast<std::optional<Record>*>(into)->emplace(ormel::decode<Record>(result));
        }) {}

  /// Fills the place. Fails with `DecodingError`.
  void decode(const JSONValue& result) const { decode_(result, place_); }

 private:
  void* place_;
  void (*decode_)(const JSONValue& result, void* into);
};

}  // namespace ormel::detail
