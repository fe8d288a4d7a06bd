#pragma once

// The expected JSON forms: records, words and variants as data, read from the files in `Data`. Data/README.md describes
// their format.

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::tests {

/// The type of a field: a plain one or a definition's name, by itself or in a list or a map.
struct ExpectedType {
  enum class Shape { single, list, lossyList, map };

  Shape shape = Shape::single;
  /// "text", "int", "number", "bool", "json" or the name of a definition.
  std::string name;

  ExpectedType element() const { return {Shape::single, name}; }
};

struct ExpectedField {
  enum class Rule {
    required,
    /// Empty when absent, and then not written.
    optional,
    /// Empty when absent, and then written as null.
    nullWhenAbsent,
    /// Has `fallback` when absent.
    defaulted,
    /// Is true when absent if there is a value under `otherKey`, else false.
    trueWhen,
  };

  std::string name;
  /// The keys in the order in which they are tried.
  std::vector<std::string> keys;
  std::string writtenKey;
  ExpectedType type;
  Rule rule = Rule::required;
  JSONValue fallback;
  std::string otherKey;
  bool isOmittedWhenEmpty = false;
};

/// Stands for the word of a case that is never read by its own word.
inline constexpr std::string_view anyWord = "*";

struct ExpectedWord {
  std::string caseName;
  std::string word;
  /// False for a word that is only read.
  bool isWritten = true;
};

struct ExpectedCase {
  /// The definition with the fields.
  std::string fields;
  /// The type of the variant's alternative.
  std::string alternative;
  std::vector<std::string> words;
  /// Absent for a case that is written without a type.
  std::optional<std::string> writtenWord;
};

/// A value of a form that no rule tells.
struct ExpectedReading {
  enum class Refused { asCorrupted, asMismatch, forMissingKey };

  JSONValue input;
  JSONValue written;
  std::optional<Refused> refusal;
  /// The failure's text or the missing key.
  std::string failure;
};

/// The treatment of a word that no case has.
struct ExpectedUnknown {
  enum class Rule { fails, isCase, keepsType, keepsEverything };

  Rule rule = Rule::fails;
  /// With "{}" for the word.
  std::string failure;
  /// The case that it is read as, or the alternative that keeps it.
  std::string name;
};

struct Definition {
  enum class Kind { fields, record, closed, tolerant, exact, vocabulary, variant, special };

  Kind kind = Kind::record;
  std::string name;
  std::string file;
  std::vector<ExpectedField> fields;
  std::optional<std::string> writtenType;
  std::vector<ExpectedWord> words;
  /// The member of an object under which the word may stand too.
  std::optional<std::string> within;
  ExpectedUnknown unknown;
  std::vector<ExpectedCase> cases;
  std::vector<ExpectedReading> readings;

  bool isEnumeration() const { return kind == Kind::closed || kind == Kind::tolerant || kind == Kind::exact; }
};

using Catalog = std::map<std::string, Definition, std::less<>>;

/// All definitions of the files in a folder. Fails with `std::runtime_error` that names the line, or the definition if
/// it refers to another one that does not exist.
Catalog readCatalog(const std::filesystem::path& folder);

}  // namespace ormel::tests
