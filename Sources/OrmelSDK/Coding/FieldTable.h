#pragma once

// The vocabulary in which a record's wire form is told. A record is an aggregate; its table stands in the internal
// header of its family, one line a field, in the order of declaration:
//
//   template <>
//   struct ormel::coding::RecordTable<ormel::ThreadGoal> {
//     static constexpr auto fields = std::tuple(
//         required<&ThreadGoal::threadID>("thread_id", "threadId"),
//         optional<&ThreadGoal::tokenBudget>("tokenBudget", "token_budget"),
//         defaulted<&ThreadGoal::notes>("notes").omittedWhenEmpty());
//   };
//   ORMEL_DECLARE_CODEC(ThreadGoal)
//
// and the family's `.cpp` says ORMEL_DEFINE_RECORD(ThreadGoal). Keys are tried in the order given, a later one only
// when the earlier is absent or null; the first is written. A record that leaves a field out of its table does not
// compile.
//
// Two more members of a table are optional:
//   static constexpr std::string_view writtenType = "agent_message";
//     the record says its own type when it is written, by itself or as a case of a variant
//   static void finish(Record& record, const JSONObject& object, const CodingPath& path);
//     what the fields cannot tell one by one; called when all have been read

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/Codec.h"

namespace ormel::coding {

/// The table of a record's fields; specialised per record.
template <typename Record>
struct RecordTable;

enum class Presence {
  /// Fails with a missing-key error that names the last key tried.
  required,
  /// The field is a `std::optional`, empty when no key has a value. Written when present.
  optional,
  /// Keeps the record's own initial value when no key has a value.
  defaulted,
};

template <typename>
struct MemberTraits;
template <typename Record, typename Value>
struct MemberTraits<Value Record::*> {
  using Type = Value;
};

template <typename T>
struct Unwrapped {
  using Type = T;
  static constexpr bool isOptional = false;
};
template <typename T>
struct Unwrapped<std::optional<T>> {
  using Type = T;
  static constexpr bool isOptional = true;
};

/// Reads a list whose elements may each fail: those that do are dropped, the others keep their order.
template <typename List>
struct LossyCodec {
  using Element = typename List::value_type;

  static void decodeInto(List& into, const JSONValue& value, const CodingPath& path) {
    const auto* array = value.arrayValue();
    if (!array) failUnexpected("Array", value, path);
    into.clear();
    into.reserve(array->size());
    for (const auto& element : *array) {
      try {
        Codec<Element>::decodeInto(into.emplace_back(), element, path);
      } catch (const DecodingError&) {
        into.pop_back();
      }
    }
  }
  static JSONValue encode(const List& value) { return Codec<List>::encode(value); }
};

/// One line of a table. `Coder` reads and writes the value itself, without regard to its absence.
template <auto Member, Presence presence_, std::size_t keyCount, typename Coder>
struct Field {
  static constexpr auto member = Member;
  static constexpr Presence presence = presence_;
  using Value = typename MemberTraits<decltype(Member)>::Type;
  using ValueCoder = Coder;
  static_assert((presence == Presence::optional) == Unwrapped<Value>::isOptional,
                "exactly the optional fields are std::optional");

  /// In the order in which they are tried.
  std::array<std::string_view, keyCount> keys;
  std::string_view writtenKey;
  bool omitEmpty = false;

  /// Writes another key than the first.
  constexpr Field writtenAs(std::string_view key) const {
    Field changed = *this;
    changed.writtenKey = key;
    return changed;
  }

  /// Leaves an empty list or text out when writing.
  constexpr Field omittedWhenEmpty() const {
    Field changed = *this;
    changed.omitEmpty = true;
    return changed;
  }

  /// Reads the list element by element and drops those that fail.
  constexpr auto lossy() const {
    return Field<Member, presence, keyCount, LossyCodec<typename Unwrapped<Value>::Type>>{keys, writtenKey, omitEmpty};
  }
};

template <auto Member, Presence presence, typename... Keys>
constexpr auto makeField(Keys... keys) {
  using Value = typename Unwrapped<typename MemberTraits<decltype(Member)>::Type>::Type;
  const std::array<std::string_view, sizeof...(Keys)> list{std::string_view(keys)...};
  return Field<Member, presence, sizeof...(Keys), Codec<Value>>{list, list[0]};
}

template <auto Member, typename... Keys>
constexpr auto required(Keys... keys) {
  return makeField<Member, Presence::required>(keys...);
}

template <auto Member, typename... Keys>
constexpr auto optional(Keys... keys) {
  return makeField<Member, Presence::optional>(keys...);
}

template <auto Member, typename... Keys>
constexpr auto defaulted(Keys... keys) {
  return makeField<Member, Presence::defaulted>(keys...);
}

}  // namespace ormel::coding
