#pragma once

// The names of a record's fields and of an enumeration's cases, as the compiler spells them. For tests only: nothing
// here is guaranteed by the language, and a compiler that spells them otherwise makes every name check fail.

#include <array>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace ormel::tests {

namespace reflection {

/// Converts to the type of any field, so that an aggregate's fields can be counted.
template <typename Record>
struct AnyValue {
  template <typename T>
    requires(!std::is_same_v<std::remove_cvref_t<T>, Record>)
  operator T() const {
    std::abort();
  }
};

template <typename Record, std::size_t... indices>
constexpr bool takesValues(std::index_sequence<indices...>) {
  return requires { Record{((void)indices, AnyValue<Record>{})...}; };
}

template <typename Record, std::size_t count = 0>
constexpr std::size_t fieldCount() {
  if constexpr (takesValues<Record>(std::make_index_sequence<count + 1>{})) {
    return fieldCount<Record, count + 1>();
  } else {
    return count;
  }
}

// A structured binding names as many fields as there are.
#define ORMEL_BIND_FIELDS(number, ...) \
  if constexpr (count == number) {     \
    auto& [__VA_ARGS__] = record;      \
    return use(__VA_ARGS__);           \
  } else
#define ORMEL_FIELDS_1 field1
#define ORMEL_FIELDS_2 ORMEL_FIELDS_1, field2
#define ORMEL_FIELDS_3 ORMEL_FIELDS_2, field3
#define ORMEL_FIELDS_4 ORMEL_FIELDS_3, field4
#define ORMEL_FIELDS_5 ORMEL_FIELDS_4, field5
#define ORMEL_FIELDS_6 ORMEL_FIELDS_5, field6
#define ORMEL_FIELDS_7 ORMEL_FIELDS_6, field7
#define ORMEL_FIELDS_8 ORMEL_FIELDS_7, field8
#define ORMEL_FIELDS_9 ORMEL_FIELDS_8, field9
#define ORMEL_FIELDS_10 ORMEL_FIELDS_9, field10
#define ORMEL_FIELDS_11 ORMEL_FIELDS_10, field11
#define ORMEL_FIELDS_12 ORMEL_FIELDS_11, field12
#define ORMEL_FIELDS_13 ORMEL_FIELDS_12, field13
#define ORMEL_FIELDS_14 ORMEL_FIELDS_13, field14
#define ORMEL_FIELDS_15 ORMEL_FIELDS_14, field15
#define ORMEL_FIELDS_16 ORMEL_FIELDS_15, field16
#define ORMEL_FIELDS_17 ORMEL_FIELDS_16, field17
#define ORMEL_FIELDS_18 ORMEL_FIELDS_17, field18
#define ORMEL_FIELDS_19 ORMEL_FIELDS_18, field19
#define ORMEL_FIELDS_20 ORMEL_FIELDS_19, field20
#define ORMEL_FIELDS_21 ORMEL_FIELDS_20, field21
#define ORMEL_FIELDS_22 ORMEL_FIELDS_21, field22
#define ORMEL_FIELDS_23 ORMEL_FIELDS_22, field23
#define ORMEL_FIELDS_24 ORMEL_FIELDS_23, field24
#define ORMEL_FIELDS_25 ORMEL_FIELDS_24, field25
#define ORMEL_FIELDS_26 ORMEL_FIELDS_25, field26
#define ORMEL_FIELDS_27 ORMEL_FIELDS_26, field27
#define ORMEL_FIELDS_28 ORMEL_FIELDS_27, field28
#define ORMEL_FIELDS_29 ORMEL_FIELDS_28, field29
#define ORMEL_FIELDS_30 ORMEL_FIELDS_29, field30
#define ORMEL_FIELDS_31 ORMEL_FIELDS_30, field31
#define ORMEL_FIELDS_32 ORMEL_FIELDS_31, field32
#define ORMEL_FIELDS_33 ORMEL_FIELDS_32, field33
#define ORMEL_FIELDS_34 ORMEL_FIELDS_33, field34
#define ORMEL_FIELDS_35 ORMEL_FIELDS_34, field35
#define ORMEL_FIELDS_36 ORMEL_FIELDS_35, field36
#define ORMEL_FIELDS_37 ORMEL_FIELDS_36, field37
#define ORMEL_FIELDS_38 ORMEL_FIELDS_37, field38
#define ORMEL_FIELDS_39 ORMEL_FIELDS_38, field39
#define ORMEL_FIELDS_40 ORMEL_FIELDS_39, field40

/// Calls `use` with references to all fields, in the order of declaration.
template <typename Record, typename Use>
constexpr decltype(auto) withFields(Record& record, const Use& use) {
  constexpr std::size_t count = fieldCount<std::remove_const_t<Record>>();
  if constexpr (count == 0) {
    return use();
  } else
    ORMEL_BIND_FIELDS(1, ORMEL_FIELDS_1)
  ORMEL_BIND_FIELDS(2, ORMEL_FIELDS_2)
  ORMEL_BIND_FIELDS(3, ORMEL_FIELDS_3)
  ORMEL_BIND_FIELDS(4, ORMEL_FIELDS_4)
  ORMEL_BIND_FIELDS(5, ORMEL_FIELDS_5)
  ORMEL_BIND_FIELDS(6, ORMEL_FIELDS_6)
  ORMEL_BIND_FIELDS(7, ORMEL_FIELDS_7)
  ORMEL_BIND_FIELDS(8, ORMEL_FIELDS_8)
  ORMEL_BIND_FIELDS(9, ORMEL_FIELDS_9)
  ORMEL_BIND_FIELDS(10, ORMEL_FIELDS_10)
  ORMEL_BIND_FIELDS(11, ORMEL_FIELDS_11)
  ORMEL_BIND_FIELDS(12, ORMEL_FIELDS_12)
  ORMEL_BIND_FIELDS(13, ORMEL_FIELDS_13)
  ORMEL_BIND_FIELDS(14, ORMEL_FIELDS_14)
  ORMEL_BIND_FIELDS(15, ORMEL_FIELDS_15)
  ORMEL_BIND_FIELDS(16, ORMEL_FIELDS_16)
  ORMEL_BIND_FIELDS(17, ORMEL_FIELDS_17)
  ORMEL_BIND_FIELDS(18, ORMEL_FIELDS_18)
  ORMEL_BIND_FIELDS(19, ORMEL_FIELDS_19)
  ORMEL_BIND_FIELDS(20, ORMEL_FIELDS_20)
  ORMEL_BIND_FIELDS(21, ORMEL_FIELDS_21)
  ORMEL_BIND_FIELDS(22, ORMEL_FIELDS_22)
  ORMEL_BIND_FIELDS(23, ORMEL_FIELDS_23)
  ORMEL_BIND_FIELDS(24, ORMEL_FIELDS_24)
  ORMEL_BIND_FIELDS(25, ORMEL_FIELDS_25)
  ORMEL_BIND_FIELDS(26, ORMEL_FIELDS_26)
  ORMEL_BIND_FIELDS(27, ORMEL_FIELDS_27)
  ORMEL_BIND_FIELDS(28, ORMEL_FIELDS_28)
  ORMEL_BIND_FIELDS(29, ORMEL_FIELDS_29)
  ORMEL_BIND_FIELDS(30, ORMEL_FIELDS_30)
  ORMEL_BIND_FIELDS(31, ORMEL_FIELDS_31)
  ORMEL_BIND_FIELDS(32, ORMEL_FIELDS_32)
  ORMEL_BIND_FIELDS(33, ORMEL_FIELDS_33)
  ORMEL_BIND_FIELDS(34, ORMEL_FIELDS_34)
  ORMEL_BIND_FIELDS(35, ORMEL_FIELDS_35)
  ORMEL_BIND_FIELDS(36, ORMEL_FIELDS_36)
  ORMEL_BIND_FIELDS(37, ORMEL_FIELDS_37)
  ORMEL_BIND_FIELDS(38, ORMEL_FIELDS_38)
  ORMEL_BIND_FIELDS(39, ORMEL_FIELDS_39)
  ORMEL_BIND_FIELDS(40, ORMEL_FIELDS_40) {
    static_assert(count == 0, "a record has more fields than the table of bindings");
  }
}
#undef ORMEL_BIND_FIELDS
#undef ORMEL_FIELDS_1
#undef ORMEL_FIELDS_2
#undef ORMEL_FIELDS_3
#undef ORMEL_FIELDS_4
#undef ORMEL_FIELDS_5
#undef ORMEL_FIELDS_6
#undef ORMEL_FIELDS_7
#undef ORMEL_FIELDS_8
#undef ORMEL_FIELDS_9
#undef ORMEL_FIELDS_10
#undef ORMEL_FIELDS_11
#undef ORMEL_FIELDS_12
#undef ORMEL_FIELDS_13
#undef ORMEL_FIELDS_14
#undef ORMEL_FIELDS_15
#undef ORMEL_FIELDS_16
#undef ORMEL_FIELDS_17
#undef ORMEL_FIELDS_18
#undef ORMEL_FIELDS_19
#undef ORMEL_FIELDS_20
#undef ORMEL_FIELDS_21
#undef ORMEL_FIELDS_22
#undef ORMEL_FIELDS_23
#undef ORMEL_FIELDS_24
#undef ORMEL_FIELDS_25
#undef ORMEL_FIELDS_26
#undef ORMEL_FIELDS_27
#undef ORMEL_FIELDS_28
#undef ORMEL_FIELDS_29
#undef ORMEL_FIELDS_30
#undef ORMEL_FIELDS_31
#undef ORMEL_FIELDS_32
#undef ORMEL_FIELDS_33
#undef ORMEL_FIELDS_34
#undef ORMEL_FIELDS_35
#undef ORMEL_FIELDS_36
#undef ORMEL_FIELDS_37
#undef ORMEL_FIELDS_38
#undef ORMEL_FIELDS_39
#undef ORMEL_FIELDS_40

#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wundefined-var-template"
#endif

/// Only its fields' addresses are used, and those only while compiling.
template <typename Record>
extern Record imaginary;

template <auto pointer>
consteval std::string_view signature() {
  return __PRETTY_FUNCTION__;
}

/// The argument in a signature: "&imaginary<Record>.name" or "Enumeration::name" in some spelling, or a cast.
consteval std::string_view argument(std::string_view signature) {
  constexpr std::string_view before = "pointer = ";
  signature.remove_prefix(signature.find(before) + before.size());
  return signature.substr(0, signature.find_first_of(";]"));
}

/// The identifier at the end, without the underscore that keeps it apart from a keyword.
consteval std::string_view lastIdentifier(std::string_view text) {
  constexpr auto belongs = [](char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '_';
  };
  while (!text.empty() && !belongs(text.back())) text.remove_suffix(1);
  std::size_t start = text.size();
  while (start > 0 && belongs(text[start - 1])) --start;
  text.remove_prefix(start);
  if (text.ends_with('_')) text.remove_suffix(1);
  return text;
}

struct Addresses {
  template <typename... Fields>
  constexpr auto operator()(const Fields&... fields) const {
    return std::array<const void*, sizeof...(Fields)>{&fields...};
  }
};

template <typename Record, std::size_t... indices>
consteval auto fieldNames(std::index_sequence<indices...>) {
  [[maybe_unused]] constexpr auto fields = withFields(imaginary<Record>, Addresses());
  return std::array<std::string_view, sizeof...(indices)>{lastIdentifier(argument(signature<fields[indices]>()))...};
}

#ifdef __clang__
#pragma clang diagnostic pop
#endif

/// The name of the case with a value, or empty if no case has it: the compiler then writes a cast.
template <auto value>
consteval std::string_view caseName() {
  constexpr std::string_view text = argument(signature<value>());
  return text.starts_with('(') ? std::string_view() : lastIdentifier(text);
}

template <typename Type>
consteval std::string_view typeSignature() {
  return __PRETTY_FUNCTION__;
}

}  // namespace reflection

/// The unqualified name of a type.
template <typename Type>
consteval std::string_view typeName() {
  constexpr std::string_view before = "Type = ";
  std::string_view text = reflection::typeSignature<Type>();
  text.remove_prefix(text.find(before) + before.size());
  return reflection::lastIdentifier(text.substr(0, text.find_first_of(";]")));
}

/// In the order of declaration.
template <typename Record>
inline constexpr auto fieldNames =
    reflection::fieldNames<Record>(std::make_index_sequence<reflection::fieldCount<Record>()>{});

/// Calls `use` with references to all fields, in the order of declaration.
template <typename Record, typename Use>
void withFields(const Record& record, const Use& use) {
  reflection::withFields(record, use);
}

/// The names of the cases that are numbered from 0 on.
template <typename Enumeration, std::size_t number = 0>
void addCaseNames(std::vector<std::string_view>& names) {
  constexpr std::string_view name = reflection::caseName<static_cast<Enumeration>(number)>();
  if constexpr (!name.empty()) {
    names.push_back(name);
    addCaseNames<Enumeration, number + 1>(names);
  }
}

}  // namespace ormel::tests
