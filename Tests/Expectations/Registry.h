#pragma once

// The library's types with a JSON form, without their types: what the checks need to drive them by name.

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Expectations/Reflection.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel::tests {

/// A field's value in the form in which it is written; absent for an empty optional.
struct FoundField {
  std::string name;
  std::optional<JSONValue> value;
  friend bool operator==(const FoundField&, const FoundField&) = default;
};

using FoundFields = std::vector<FoundField>;

/// A value of some registered type.
using Erased = std::unique_ptr<const void, void (*)(const void*)>;

struct RegisteredCase {
  std::string name;
  std::string word;
  JSONValue written;
};

struct RegisteredType {
  std::string name;
  Erased (*decode)(const JSONValue&) = nullptr;
  JSONValue (*encode)(const void*) = nullptr;
  bool (*areEqual)(const void*, const void*) = nullptr;
  /// The fields of a record, or of a variant's alternative.
  FoundFields (*fields)(const void*) = nullptr;
  /// The name of an enumeration's case or of a variant's alternative.
  std::string (*caseName)(const void*) = nullptr;
  /// The cases of an enumeration, or the constants of an open vocabulary.
  std::vector<RegisteredCase> cases;
};

inline JSONValue written(const std::string& value) { return value; }
inline JSONValue written(const SharedText& value) { return value.view(); }
inline JSONValue written(bool value) { return value; }
inline JSONValue written(double value) { return value; }
inline JSONValue written(std::int64_t value) { return value; }
inline JSONValue written(const JSONValue& value) { return value; }
template <typename Value>
JSONValue written(const Value& value) {
  return encode(value);
}
template <typename Element>
JSONValue written(const std::vector<Element>& values) {
  std::vector<JSONValue> elements;
  for (const auto& value : values) elements.push_back(written(value));
  return JSONValue::array(elements);
}
template <typename Value>
JSONValue written(const std::map<std::string, Value>& values) {
  std::vector<JSONMemberInit> members;
  for (const auto& [key, value] : values) members.emplace_back(key, written(value));
  return JSONValue::object(members);
}

template <typename Value>
std::optional<JSONValue> writtenIfPresent(const Value& value) {
  return written(value);
}
template <typename Value>
std::optional<JSONValue> writtenIfPresent(const std::optional<Value>& value) {
  return value ? std::optional(written(*value)) : std::nullopt;
}

/// The record with the fields; another than `Alternative` where that only gives a record a second meaning.
template <typename Alternative>
struct Plain {
  using Record = Alternative;
};

/// Adds the fields of a record, whose names are given, to a list.
struct FieldCollector {
  FoundFields& found;
  const std::string_view* name;

  template <typename... Fields>
  void operator()(const Fields&... fields) const {
    const std::string_view* next = name;
    (found.push_back({std::string(*next++), writtenIfPresent(fields)}), ...);
  }
};

template <typename Record>
FoundFields foundFields(const Record& record) {
  FoundFields found;
  withFields(record, FieldCollector{found, fieldNames<Record>.data()});
  return found;
}

class Registry {
 public:
  template <typename Record>
  void record() {
    auto& type = add<Record>();
    type.fields = [](const void* value) { return foundFields(*static_cast<const Record*>(value)); };
  }

  template <typename Enumeration>
  void enumeration() {
    auto& type = add<Enumeration>();
    type.caseName = [](const void* value) {
      return std::string(
          caseNames<Enumeration>().at(static_cast<std::size_t>(*static_cast<const Enumeration*>(value))));
    };
    for (const auto name : caseNames<Enumeration>()) {
      const auto value = static_cast<Enumeration>(type.cases.size());
      type.cases.push_back({std::string(name), std::string(rawValue(value)), encode(value)});
    }
  }

  template <typename Vocabulary>
  void vocabulary(const std::vector<std::pair<std::string, Vocabulary>>& constants) {
    auto& type = add<Vocabulary>();
    for (const auto& [name, constant] : constants) {
      const JSONValue written = encode(constant);
      if constexpr (requires { constant.rawValue; }) {
        type.cases.push_back({name, constant.rawValue, written});
      } else {
        type.cases.push_back({name, std::string(written.stringValue().value_or("")), written});
      }
    }
  }

  template <typename Variant>
  void variant() {
    auto& type = add<Variant>();
    type.fields = [](const void* value) {
      return std::visit(
          []<typename Alternative>(const Alternative& record) {
            return foundFields<typename Plain<Alternative>::Record>(record);
          },
          static_cast<const Variant*>(value)->value);
    };
    type.caseName = [](const void* value) {
      return std::visit([]<typename Alternative>(const Alternative&) { return std::string(typeName<Alternative>()); },
                        static_cast<const Variant*>(value)->value);
    };
  }

  template <typename Special>
  void special() {
    add<Special>();
  }

  const RegisteredType* find(std::string_view name) const;
  const std::map<std::string, RegisteredType, std::less<>>& all() const { return types_; }

 private:
  template <typename Enumeration>
  static const std::vector<std::string_view>& caseNames() {
    static const auto names = [] {
      std::vector<std::string_view> collected;
      addCaseNames<Enumeration>(collected);
      return collected;
    }();
    return names;
  }

  template <typename Type>
  RegisteredType& add() {
    auto& type = types_[std::string(typeName<Type>())];
    type.name = typeName<Type>();
    type.decode = [](const JSONValue& value) {
      return Erased(new Type(ormel::decode<Type>(value)),
                    [](const void* old) { delete static_cast<const Type*>(old); });
    };
    type.encode = [](const void* value) { return ormel::encode(*static_cast<const Type*>(value)); };
    type.areEqual = [](const void* left, const void* right) {
      return *static_cast<const Type*>(left) == *static_cast<const Type*>(right);
    };
    return type;
  }

  std::map<std::string, RegisteredType, std::less<>> types_;
};

/// The types of each family, a line a type.
void registerInput(Registry& registry);
void registerItems(Registry& registry);
void registerHandlers(Registry& registry);
void registerRecords(Registry& registry);
void registerEvents(Registry& registry);
void registerAccountRecords(Registry& registry);
void registerCallWords(Registry& registry);
void registerCatalogueRecords(Registry& registry);
void registerConfigRecords(Registry& registry);
void registerModelRecords(Registry& registry);
void registerPluginRecords(Registry& registry);
void registerThreadLists(Registry& registry);

/// All of them.
const Registry& registry();

}  // namespace ormel::tests
