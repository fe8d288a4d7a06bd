#pragma once

// How the definitions read and write: a second, slow implementation of the rules, against which the library's is held.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Expectations/Catalog.h"
#include "Expectations/Registry.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::tests {

/// Members of an object in the making.
class Draft {
 public:
  void set(std::string_view key, JSONValue value);
  void remove(std::string_view key);
  const JSONValue* find(std::string_view key) const;
  JSONValue object() const;

 private:
  std::vector<std::pair<std::string, JSONValue>> members_;
};

/// Decides which value of a type a sample is, so that the samples of two fields differ, and those of two variations of
/// one field.
struct Seed {
  int number = 0;
  int variation = 0;

  Seed at(std::size_t position) const { return {(number * 31 + static_cast<int>(position) + 1) % 100000, variation}; }
};

/// A value that a type refuses, and how.
struct Refusal {
  JSONValue input;
  DecodingError::Kind kind = DecodingError::Kind::typeMismatch;
  /// The path from the value on; absent where any will do.
  std::optional<std::vector<std::string>> path = std::vector<std::string>();
  /// The missing key of a `keyNotFound`.
  std::string key;
  std::optional<std::string> description;

  Refusal under(const std::string& parent) const;
};

class WireModel {
 public:
  explicit WireModel(const Catalog& catalog) : catalog_(&catalog) {}

  const Definition& definition(const std::string& name) const { return catalog_->at(name); }

  /// A value that the type reads, with all fields of a record under their first keys.
  JSONValue sample(const ExpectedType& type, Seed seed) const;

  /// All fields of a record.
  Draft samples(const Definition& record, Seed seed) const;

  /// Values that the type refuses; JSON null is not among them.
  std::vector<Refusal> refusals(const ExpectedType& type, Seed seed) const;

  /// Absent if null is a value.
  std::optional<Refusal> refusalOfNull(const ExpectedType& type) const;

  /// The form in which a value that was read is written.
  JSONValue written(const ExpectedType& type, const JSONValue& value) const;

  /// The members that are written of a record that was read from a draft.
  Draft writtenMembers(const Definition& record, const Draft& draft, const std::optional<std::string>& type) const;

  /// The fields of a record that was read from a draft.
  FoundFields fields(const Definition& record, const Draft& draft) const;

 private:
  JSONValue singleSample(const std::string& type, Seed seed) const;
  void addRefusals(const Definition& definition, Seed seed, std::vector<Refusal>& refusals) const;
  JSONValue writtenSingle(const std::string& type, const JSONValue& value) const;
  JSONValue writtenCase(const Definition& variant, const JSONValue& value) const;
  std::optional<JSONValue> found(const ExpectedField& field, const Draft& draft) const;
  std::optional<JSONValue> valueOf(const ExpectedField& field, const Draft& draft) const;

  const Catalog* catalog_;
};

Refusal refusalOf(const ExpectedReading& reading);

/// The failure's text for a word.
std::string failureOfWord(const ExpectedUnknown& unknown, std::string_view word);

}  // namespace ormel::tests
