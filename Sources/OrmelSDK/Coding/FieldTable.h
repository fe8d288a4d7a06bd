#pragma once

// The vocabulary in which a record's wire form is told. A record is an aggregate; its table stands in the `.cpp` of its
// family, one line a field, in the order of declaration:
//
//   template <>
//   struct ormel::coding::RecordTable<ormel::ThreadGoal> {
//     static constexpr Field fields[] = {
//         required<&ThreadGoal::threadID>("thread_id", "threadId"),
//         optional<&ThreadGoal::tokenBudget>("tokenBudget", "token_budget"),
//         defaulted<&ThreadGoal::notes>("notes").omittedWhenEmpty(),
//     };
//   };
//   ORMEL_DEFINE_RECORD(ThreadGoal)
//
// Keys are tried in the order given, a later one only when the earlier is absent or null; the first is written. A table
// that leaves a field out, names one twice or names one of another record does not compile.
//
// Two more members of a table are optional:
//   static constexpr std::string_view writtenType = "agent_message";
//     the record says its own type when it is written, by itself or as a case of a variant
//   static void finish(Record& record, const JSONObject& object, const CodingPath& path);
//     cross-field hook, called after all fields are decoded

#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Coding/Field.h"
#include "OrmelSDK/Coding/Update.h"

namespace ormel::coding {

/// The table of a record's fields; specialised per record.
template <typename Record>
struct RecordTable;

/// The base of the table of a record without fields, which accepts any object.
struct NoFields {
  static constexpr std::array<Field, 0> fields{};
};

template <typename>
struct MemberTraits;
template <typename RecordType, typename ValueType>
struct MemberTraits<ValueType RecordType::*> {
  using Record = RecordType;
  using Value = ValueType;
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

template <typename Value>
concept Optional = Unwrapped<Value>::isOptional;

/// A list, a map or a text.
template <typename Value>
concept Emptiable = !Optional<Value> && requires(const Value& value) {
  { value.empty() } -> std::same_as<bool>;
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

/// `Coder` reads and writes the value that a field of type `Value` holds, without regard to its absence.
template <typename Value, typename Coder>
struct CoderOf {
  static void decodeInto(void* into, const JSONValue& value, const CodingPath& path) {
    if constexpr (Optional<Value>) {
      Coder::decodeInto(static_cast<Value*>(into)->emplace(), value, path);
    } else {
      Coder::decodeInto(*static_cast<Value*>(into), value, path);
    }
  }
  static JSONValue encode(const void* from) {
    const auto& value = *static_cast<const Value*>(from);
    if constexpr (Optional<Value>) {
      return Coder::encode(*value);
    } else {
      return Coder::encode(value);
    }
  }
  static bool isEmpty(const void* from) noexcept {
    [[maybe_unused]] const auto& value = *static_cast<const Value*>(from);
    if constexpr (Optional<Value>) {
      return !value.has_value();
    } else if constexpr (std::same_as<Value, bool>) {
      return !value;
    } else if constexpr (Emptiable<Value>) {
      return value.empty();
    } else if constexpr (AnyUpdate<Value>) {
      return value.isUnchanged();
    } else {
      return false;
    }
  }
};

template <typename Value, typename Coder>
inline constexpr ValueCoder readingCoder{&CoderOf<Value, Coder>::decodeInto, &CoderOf<Value, Coder>::encode,
                                         &CoderOf<Value, Coder>::isEmpty};

template <typename Value, typename Coder>
inline constexpr ValueCoder writingCoder{nullptr, &CoderOf<Value, Coder>::encode, &CoderOf<Value, Coder>::isEmpty};

template <auto Member>
void* placeOf(void* record) noexcept {
  return &(static_cast<typename MemberTraits<decltype(Member)>::Record*>(record)->*Member);
}

/// A line of a table while it is being written; it becomes a `Field`. A line that is `writtenOnly` needs no reader.
template <typename Value, bool writtenOnly = false>
struct FieldLine : Field {
  /// Writes another key than the first.
  consteval FieldLine writtenAs(std::string_view key) const {
    FieldLine changed = *this;
    changed.writtenKey = key;
    return changed;
  }

  /// Leaves an empty list or text out when writing.
  consteval FieldLine omittedWhenEmpty() const
    requires Emptiable<Value>
  {
    return writing(WhenEmpty::omitted);
  }

  /// Writes JSON null for an absent value.
  consteval FieldLine nullWhenAbsent() const
    requires Optional<Value>
  {
    return writing(WhenEmpty::null);
  }

  /// Leaves the key out when the value is false.
  consteval FieldLine onlyWhenTrue() const
    requires std::same_as<Value, bool>
  {
    return writing(WhenEmpty::omitted);
  }

  /// Reads the list element by element and drops those that fail.
  consteval FieldLine lossy() const
    requires requires { typename Unwrapped<Value>::Type::value_type; }
  {
    return codedBy<LossyCodec<typename Unwrapped<Value>::Type>>();
  }

  /// Reads and writes the value by a coder of the field's own, which has the functions of `Codec`.
  template <typename Coder>
  consteval FieldLine codedBy() const {
    FieldLine changed = *this;
    if constexpr (writtenOnly) {
      changed.coder = &writingCoder<Value, Coder>;
    } else {
      changed.coder = &readingCoder<Value, Coder>;
    }
    return changed;
  }

 private:
  consteval FieldLine writing(WhenEmpty form) const {
    FieldLine changed = *this;
    changed.whenEmpty = form;
    return changed;
  }
};

template <auto Member>
using ValueOf = typename MemberTraits<decltype(Member)>::Value;

template <auto Member, Presence presence, std::same_as<const char*>... Keys>
consteval auto fieldLine(WhenEmpty whenEmpty, const char* first, Keys... others) {
  static_assert(sizeof...(others) < Field::mostKeys, "a field has at most three keys");
  using Value = ValueOf<Member>;
  using Coder = Codec<typename Unwrapped<Value>::Type>;
  constexpr bool writtenOnly = presence == Presence::unread;
  FieldLine<Value, writtenOnly> line{{{std::string_view(first), std::string_view(others)...},
                                      1 + sizeof...(others),
                                      presence,
                                      whenEmpty,
                                      first,
                                      &placeOf<Member>,
                                      nullptr,
                                      &recordIdentity<typename MemberTraits<decltype(Member)>::Record>}};
  return line.template codedBy<Coder>();
}

template <auto Member, typename... Keys>
consteval auto required(Keys... keys) {
  static_assert(!Optional<ValueOf<Member>>, "a required field is no std::optional");
  return fieldLine<Member, Presence::required>(WhenEmpty::written, keys...);
}

template <auto Member, typename... Keys>
consteval auto optional(Keys... keys) {
  static_assert(Optional<ValueOf<Member>>, "an optional field is a std::optional");
  return fieldLine<Member, Presence::optional>(WhenEmpty::omitted, keys...);
}

template <auto Member, typename... Keys>
consteval auto defaulted(Keys... keys) {
  static_assert(!Optional<ValueOf<Member>>, "a defaulted field is no std::optional");
  return fieldLine<Member, Presence::defaulted>(WhenEmpty::written, keys...);
}

/// A field of a record that is printed and never read; an absent one is left out.
template <auto Member>
consteval auto printed(const char* name) {
  return fieldLine<Member, Presence::unread>(Optional<ValueOf<Member>> ? WhenEmpty::omitted : WhenEmpty::written, name);
}

}  // namespace ormel::coding
