#pragma once

// The vocabulary in which the params of a call are told. They are a struct of the caller's choices; its table stands in
// the `.cpp` of the call's family, one line a choice, in the order of declaration:
//
//   template <>
//   struct ormel::coding::ParamsTable<ormel::ListPluginsParams> {
//     using P = ListPluginsParams;
//     static constexpr Field fields[] = {
//         always<&P::marketplace>("marketplace"),
//         ifGiven<&P::cwds>("cwds"),
//         ifTrue<&P::forceRefetch>("forceRefetch"),
//     };
//   };
//   ORMEL_DEFINE_PARAMS(ListPluginsParams)
//
// Params are written and never read. One more member of a table is optional:
//   static constexpr bool absentWhenEmpty = true;
//     the call goes out without params when there is nothing to say, rather than with an empty object
//
// A struct that is sent inside of params, such as an element of a list, has such a table too.

#include <optional>
#include <vector>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/Params.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/Update.h"

namespace ormel::coding {

/// The table of the fields of a call's params; specialised per struct.
template <typename Params>
struct ParamsTable;

/// Sent in every call.
template <auto Member>
consteval auto always(const char* key) {
  static_assert(!Optional<ValueOf<Member>> && !AnyUpdate<ValueOf<Member>>, "what is always sent has a value");
  return fieldLine<Member, Presence::unread>(WhenEmpty::written, key);
}

/// Sent if the caller gave a value.
template <auto Member>
consteval auto ifGiven(const char* key) {
  static_assert(Optional<ValueOf<Member>>, "what may not be given is a std::optional");
  return fieldLine<Member, Presence::unread>(WhenEmpty::omitted, key);
}

/// Sent if the flag is true.
template <auto Member>
consteval auto ifTrue(const char* key) {
  static_assert(std::same_as<ValueOf<Member>, bool>, "only a flag is sent if it is true");
  return fieldLine<Member, Presence::unread>(WhenEmpty::omitted, key);
}

/// Sent in every call, as JSON null if the caller gave no value.
template <auto Member>
consteval auto nullWhenEmpty(const char* key) {
  static_assert(Optional<ValueOf<Member>>, "what may not be given is a std::optional");
  return fieldLine<Member, Presence::unread>(WhenEmpty::null, key);
}

/// A value is sent, a cleared one as JSON null; one to be left as it is isn't sent.
template <auto Member>
consteval auto triState(const char* key) {
  static_assert(AnyUpdate<ValueOf<Member>>, "only an Update has three states");
  return fieldLine<Member, Presence::unread>(WhenEmpty::omitted, key);
}

template <typename T>
struct Codec<Update<T>> {
  static JSONValue encode(const Update<T>& update) {
    return update.newValue() ? Codec<T>::encode(*update.newValue()) : JSONValue();
  }
};

/// The params as they are sent, or nothing if the call goes out without params.
template <typename Params>
std::optional<JSONValue> encodeParams(const Params& params) {
  const RecordDescription& description = descriptionOf(Coded<Params>());
  std::vector<JSONMemberInit> members;
  encodeMembers(description, &params, members);
  if (members.empty() && description.absentWhenEmpty) return std::nullopt;
  return JSONValue::object(members);
}

inline std::optional<JSONValue> encodeParams(const NoParams&) { return std::nullopt; }
inline std::optional<JSONValue> encodeParams(const EmptyParams&) { return JSONValue::object(); }

template <typename Params>
consteval RecordDescription describeParams() {
  using Table = ParamsTable<Params>;
  RecordDescription description;
  description.name = typeName<Params>();
  description.fields = Table::fields;
  if constexpr (requires { Table::absentWhenEmpty; }) description.absentWhenEmpty = Table::absentWhenEmpty;
  return description;
}

template <typename Params>
inline constexpr RecordDescription paramsDescription = describeParams<Params>();

template <typename Params>
JSONValue encodeParamsObject(const Params& params) {
  return encodeRecord(paramsDescription<Params>, &params);
}

}  // namespace ormel::coding

/// Defines how params, or a struct inside of them, are written. At global scope.
#define ORMEL_DEFINE_PARAMS(Params)                                                           \
  ORMEL_CHECK_TABLE(Params, ParamsTable)                                                      \
  namespace ormel::coding {                                                                   \
  const RecordDescription& descriptionOf(Coded<Params>) { return paramsDescription<Params>; } \
  }                                                                                           \
  ORMEL_DEFINE_WRITING(Params, encodeParamsObject)
