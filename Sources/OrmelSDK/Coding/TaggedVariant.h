#pragma once

// Variants that the wire tells apart by a `type` word in the same object as the record's own keys. A variant is a
// class with a `std::variant` member `value`; its table names its cases in the order in which words are compared:
//
//   template <>
//   struct ormel::coding::VariantTable<ormel::UserInput> {
//     static constexpr auto cases = std::tuple(
//         variantCase<UserInputImage>("image"),
//         variantCase<UserInputLocalImage>("localImage", "local_image"));
//     static UserInput decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
//   };
//
// The first word is written, unless the record's table says the type itself. Alternatives without a case are the
// business of `encodeUnknown`.

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Coding/RecordCodec.h"

namespace ormel::coding {

template <typename Variant>
struct VariantTable;

template <typename Record_, typename Table_, std::size_t wordCount>
struct VariantCase {
  using Record = Record_;
  using Table = Table_;

  std::array<std::string_view, wordCount> words;
  bool writesType = true;
  std::string_view writtenType;

  /// The record is written by itself, with no `type` to read it back by.
  constexpr VariantCase withoutType() const {
    VariantCase changed = *this;
    changed.writesType = false;
    return changed;
  }

  constexpr VariantCase writtenAs(std::string_view type) const {
    VariantCase changed = *this;
    changed.writtenType = type;
    return changed;
  }
};

/// A case whose record is read and written by `Table` in the variant's form.
template <typename Record, typename Table = RecordTable<Record>, typename... Words>
constexpr auto variantCase(Words... words) {
  const std::array<std::string_view, sizeof...(Words)> list{std::string_view(words)...};
  return VariantCase<Record, Table, sizeof...(Words)>{list, !writesOwnType<Table>, list[0]};
}

/// The required string under `type`.
const JSONValue& typeOf(const JSONValue& value, std::string_view variantName, const CodingPath& path);

/// Its text.
std::string_view decodeType(const JSONValue& value, std::string_view variantName, const CodingPath& path);

/// The words of all cases of a variant, and for each word the reader of its case. Of a word that two cases have the
/// first stands.
template <typename Variant>
struct VariantWords {
  using Reader = void (*)(Variant& into, const JSONValue& value, const CodingPath& path);

  template <typename Case>
  static void decodeCase(Variant& into, const JSONValue& value, const CodingPath& path) {
    decodeRecord<typename Case::Record, typename Case::Table>(into.value.template emplace<typename Case::Record>(),
                                                              value, path);
  }

  static constexpr std::size_t most =
      std::apply([](const auto&... cases) { return (cases.words.size() + ...); }, VariantTable<Variant>::cases);

  struct Collected {
    WordList<most> words;
    std::array<Reader, most> readers{};
  };

  static consteval Collected collect() {
    Collected collected;
    const auto add = [&](const auto& variantCase) {
      for (const std::string_view word : variantCase.words) {
        const std::size_t before = collected.words.count;
        const std::size_t position = collected.words.add(word);
        if (position == before) collected.readers[position] = decodeCase<std::remove_cvref_t<decltype(variantCase)>>;
      }
    };
    std::apply([&](const auto&... cases) { (add(cases), ...); }, VariantTable<Variant>::cases);
    return collected;
  }

  static constexpr auto readers = collect().readers;
  static constexpr auto words = WordTable<collect().words.count>(collect().words);
  static constexpr WordIndex index = words.index();
};

template <typename Variant>
void decodeVariant(Variant& into, const JSONValue& value, const CodingPath& path) {
  const JSONValue& type = typeOf(value, typeName<Variant>(), path);
  const std::byte* const word = detail::JSONAccess::data(type);
  const std::size_t position = VariantWords<Variant>::index.find(word);
  if (position != WordIndex::none) {
    VariantWords<Variant>::readers[position](into, value, path);
  } else {
    into = VariantTable<Variant>::decodeUnknown(detail::storedText(word), value, path);
  }
}

template <typename Variant>
JSONValue encodeVariant(const Variant& variant) {
  std::optional<JSONValue> encoded;
  const auto tryCase = [&](const auto& variantCase) {
    using Case = std::remove_cvref_t<decltype(variantCase)>;
    const auto* record = std::get_if<typename Case::Record>(&variant.value);
    if (!record) return false;
    std::vector<JSONMemberInit> members;
    if (variantCase.writesType) members.emplace_back("type", variantCase.writtenType);
    encodeMembers<typename Case::Record, typename Case::Table>(*record, members);
    encoded = JSONValue::object(members);
    return true;
  };
  std::apply([&](const auto&... cases) { return (tryCase(cases) || ...); }, VariantTable<Variant>::cases);
  if (encoded) return *std::move(encoded);
  if constexpr (requires { VariantTable<Variant>::encodeUnknown(variant); }) {
    return VariantTable<Variant>::encodeUnknown(variant);
  } else {
    return JSONValue();
  }
}

}  // namespace ormel::coding

#define ORMEL_DEFINE_VARIANT(Type) ORMEL_DEFINE_CODEC_BY(Type, decodeVariant<ormel::Type>, encodeVariant)
