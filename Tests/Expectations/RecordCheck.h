#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Expectations/Findings.h"
#include "Expectations/Registry.h"
#include "Expectations/WireModel.h"

namespace ormel::tests {

/// The checks of a type in which a record's fields stand: the record itself, or a variant that has it as a case.
class RecordCheck {
 public:
  RecordCheck(const WireModel& model, const Definition& definition, const RegisteredType& type, Findings& findings);

  /// The record as a case: `word` is the type that is read.
  void asCase(const ExpectedCase& variantCase, const std::string& word);

  void checkWhole();
  /// All fields, or one.
  void checkFields(std::optional<std::size_t> only = std::nullopt);

 private:
  void checkField(const ExpectedField& field, std::size_t position);
  void checkSpelling(const ExpectedField& field, std::size_t position, std::size_t key);
  void checkWinner(const ExpectedField& field, std::size_t position, std::size_t key);
  void checkNull(const ExpectedField& field, std::size_t key);
  void checkAbsence(const ExpectedField& field);
  void checkOtherSpellings(const ExpectedField& field, std::size_t position);
  void checkEmptyAndPartialLists(const ExpectedField& field, std::size_t position);

  /// The whole sample without any spelling of a field.
  Draft without(const ExpectedField& field) const;
  /// The same with every spelling before one given as null.
  Draft withNullsBefore(const ExpectedField& field, std::size_t key) const;

  JSONValue input(const Draft& draft, bool hasTypeLast = false) const;
  void accepts(const std::string& what, const Draft& draft, const Draft& meaning);
  void accepts(const std::string& what, const Draft& draft) { accepts(what, draft, draft); }
  void compare(const std::string& what, const Erased& value, const Draft& meaning);
  void refuses(const std::string& what, const Draft& draft, const Refusal& refusal);
  void add(const std::string& what, const std::string& found);

  const WireModel& model_;
  const Definition& definition_;
  const RegisteredType& type_;
  Findings& findings_;
  Draft whole_;
  std::string where_;
  std::optional<std::string> readType_;
  std::optional<std::string> writtenType_;
  std::optional<std::string> alternative_;
  bool canBeReadBack_ = true;
};

/// How a type fails to read a value; empty if it fails in just this way.
std::string differenceFrom(const Refusal& refusal, const RegisteredType& type, const JSONValue& input);

}  // namespace ormel::tests
