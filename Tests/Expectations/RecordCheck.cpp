#include "Expectations/RecordCheck.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

namespace ormel::tests {

namespace {

using Kind = DecodingError::Kind;
using Rule = ExpectedField::Rule;
using Shape = ExpectedType::Shape;

constexpr Seed firstSeed{1, 0};
constexpr Seed otherSeed{1, 1};

std::string_view nameOf(Kind kind) {
  switch (kind) {
    case Kind::typeMismatch:
      return "type mismatch";
    case Kind::valueNotFound:
      return "no value";
    case Kind::keyNotFound:
      return "no key";
    case Kind::dataCorrupted:
      return "corrupted";
  }
  return "";
}

std::string joined(const std::vector<std::string>& path) {
  std::string text = "/";
  for (const auto& link : path) text += link + "/";
  return text;
}

std::string described(const FoundField& field) {
  return field.name + " " + (field.value ? field.value->encode() : "absent");
}

Refusal missingKeyOf(const ExpectedField& field) {
  return {JSONValue(), Kind::keyNotFound, std::vector<std::string>(), field.keys.back(), {}};
}

/// Spellings that a key could be confused with.
std::set<std::string> otherSpellingsOf(const std::string& key) {
  std::string snake, camel;
  for (std::size_t at = 0; at < key.size(); ++at) {
    const char byte = key[at];
    const bool startsWord = at > 0 && key[at - 1] == '_';
    const char upper = static_cast<char>(std::toupper(byte));
    const char lower = static_cast<char>(std::tolower(byte));
    if (byte != lower && at > 0) snake += '_';
    snake += lower;
    if (byte != '_' || at == 0) camel += startsWord && at > 1 ? upper : byte;
  }
  std::string capital = key;
  capital.front() = static_cast<char>(std::toupper(capital.front()));
  return {snake, camel, capital, key + "_"};
}

}  // namespace

std::string differenceFrom(const Refusal& refusal, const RegisteredType& type, const JSONValue& input) {
  try {
    return "is read as " + type.encode(type.decode(input).get()).encode();
  } catch (const DecodingError& error) {
    std::ostringstream difference;
    if (error.kind() != refusal.kind) {
      difference << " is refused with \"" << nameOf(error.kind()) << "\" instead of \"" << nameOf(refusal.kind) << '"';
    }
    if (refusal.path && error.context().codingPath != *refusal.path) {
      difference << " is refused at " << joined(error.context().codingPath) << " instead of " << joined(*refusal.path);
    }
    if (refusal.kind == Kind::keyNotFound && error.subject() != refusal.key) {
      difference << " misses \"" << error.subject() << "\" instead of \"" << refusal.key << '"';
    }
    if (refusal.description && error.what() != *refusal.description) {
      difference << " is refused as \"" << error.what() << "\" instead of \"" << *refusal.description << '"';
    }
    return difference.str();
  }
}

RecordCheck::RecordCheck(const WireModel& model, const Definition& definition, const RegisteredType& type,
                         Findings& findings)
    : model_(model),
      definition_(definition),
      type_(type),
      findings_(findings),
      whole_(model.samples(definition, firstSeed)),
      where_(definition.name),
      writtenType_(definition.writtenType) {}

void RecordCheck::asCase(const ExpectedCase& variantCase, const std::string& word) {
  where_ = type_.name + "/" + variantCase.alternative;
  readType_ = word;
  writtenType_ = variantCase.writtenWord;
  alternative_ = variantCase.alternative;
  canBeReadBack_ = variantCase.writtenWord.has_value();
}

void RecordCheck::add(const std::string& what, const std::string& found) {
  findings_.add({where_, what + ": " + found});
}

JSONValue RecordCheck::input(const Draft& draft, bool hasTypeLast) const {
  if (!readType_) return draft.object();
  Draft typed = hasTypeLast ? draft : Draft();
  typed.set("type", *readType_);
  if (!hasTypeLast) {
    const JSONValue members = draft.object();
    for (const auto& [key, value] : *members.objectValue()) typed.set(key, value);
  }
  return typed.object();
}

void RecordCheck::compare(const std::string& what, const Erased& value, const Draft& meaning) {
  const JSONValue expected = model_.writtenMembers(definition_, meaning, writtenType_).object();
  const JSONValue written = type_.encode(value.get());
  if (written != expected) add(what, "is written " + written.encode() + " instead of " + expected.encode());
  const bool isThisCase = !alternative_ || type_.caseName(value.get()) == *alternative_;
  const FoundFields fields = isThisCase ? type_.fields(value.get()) : FoundFields();
  const FoundFields expectedFields = isThisCase ? model_.fields(definition_, meaning) : FoundFields();
  if (fields.size() != expectedFields.size()) add(what, "has " + std::to_string(fields.size()) + " fields");
  for (std::size_t at = 0; at < std::min(fields.size(), expectedFields.size()); ++at) {
    if (fields[at] == expectedFields[at]) continue;
    add(what, "has " + described(fields[at]) + " instead of " + described(expectedFields[at]));
  }
  if (canBeReadBack_ && !type_.areEqual(type_.decode(written).get(), value.get())) {
    add(what, "is not read back from " + written.encode());
  }
}

void RecordCheck::accepts(const std::string& what, const Draft& draft, const Draft& meaning) {
  try {
    compare(what, type_.decode(input(draft)), meaning);
  } catch (const DecodingError& error) {
    add(what, input(draft).encode() + " is refused at " + joined(error.context().codingPath) + " as " + error.what());
  }
}

void RecordCheck::refuses(const std::string& what, const Draft& draft, const Refusal& refusal) {
  const JSONValue value = input(draft);
  const std::string difference = differenceFrom(refusal, type_, value);
  if (!difference.empty()) add(what, value.encode() + " " + difference);
}

void RecordCheck::checkWhole() {
  const Draft other = model_.samples(definition_, otherSeed);
  accepts("the whole", whole_);
  accepts("another whole", other);
  Draft least = whole_;
  for (const auto& field : definition_.fields) {
    if (field.rule == Rule::required) continue;
    for (const auto& key : field.keys) least.remove(key);
  }
  accepts("the least", least);
  Draft more = whole_;
  more.set("futureKey", JSONValue::object({{"x", 1}}));
  const bool readsType = readType_ || whole_.find("type");
  if (!readsType) more.set("type", "of no meaning here");
  accepts("an unknown key", more, whole_);
  try {
    const Erased value = type_.decode(input(whole_));
    const auto isEqualTo = [&](const JSONValue& same) { return type_.areEqual(value.get(), type_.decode(same).get()); };
    if (!isEqualTo(input(whole_, true))) add("the whole", "differs by the order of its keys");
    if (!definition_.fields.empty() && isEqualTo(input(other))) add("the whole", "equals another one");
    if (alternative_ && type_.caseName(value.get()) != *alternative_) {
      add("the whole", "is a " + type_.caseName(value.get()));
    }
  } catch (const DecodingError& error) {
    add("the whole", std::string("is refused: ") + error.what());
  }
}

void RecordCheck::checkFields(std::optional<std::size_t> only) {
  for (std::size_t position = 0; position < definition_.fields.size(); ++position) {
    if (only && *only != position) continue;
    const std::string where = where_;
    where_ += "." + definition_.fields[position].name;
    checkField(definition_.fields[position], position);
    where_ = where;
  }
}

void RecordCheck::checkField(const ExpectedField& field, std::size_t position) {
  for (std::size_t key = 0; key < field.keys.size(); ++key) {
    checkSpelling(field, position, key);
    checkWinner(field, position, key);
    checkNull(field, key);
  }
  checkAbsence(field);
  checkOtherSpellings(field, position);
  checkEmptyAndPartialLists(field, position);
}

Draft RecordCheck::without(const ExpectedField& field) const {
  Draft draft = whole_;
  for (const auto& key : field.keys) draft.remove(key);
  return draft;
}

Draft RecordCheck::withNullsBefore(const ExpectedField& field, std::size_t key) const {
  Draft draft = without(field);
  for (std::size_t before = 0; before < key; ++before) draft.set(field.keys[before], JSONValue());
  return draft;
}

void RecordCheck::checkSpelling(const ExpectedField& field, std::size_t position, std::size_t key) {
  const std::string& name = field.keys[key];
  for (const Draft& others : {without(field), withNullsBefore(field, key)}) {
    for (const Seed variation : {firstSeed, otherSeed}) {
      Draft draft = others;
      draft.set(name, model_.sample(field.type, variation.at(position)));
      accepts("under " + name, draft);
    }
    for (const auto& refusal : model_.refusals(field.type, firstSeed.at(position))) {
      Draft draft = others;
      draft.set(name, refusal.input);
      refuses("under " + name, draft, refusal.under(name));
    }
  }
}

void RecordCheck::checkWinner(const ExpectedField& field, std::size_t position, std::size_t key) {
  const std::string& winner = field.keys[key];
  for (std::size_t later = key + 1; later < field.keys.size(); ++later) {
    const std::string& loser = field.keys[later];
    const std::string what = winner + " before " + loser;
    Draft draft = without(field);
    draft.set(loser, model_.sample(field.type, otherSeed.at(position)));
    draft.set(winner, model_.sample(field.type, firstSeed.at(position)));
    accepts(what, draft);
    for (const auto& refusal : model_.refusals(field.type, firstSeed.at(position))) {
      Draft spoilt = draft;
      spoilt.set(winner, refusal.input);
      refuses(what, spoilt, refusal.under(winner));
      spoilt = draft;
      spoilt.set(loser, refusal.input);
      accepts(what, spoilt);
    }
  }
}

void RecordCheck::checkNull(const ExpectedField& field, std::size_t key) {
  const std::string& name = field.keys[key];
  const std::string what = "null under " + name;
  const bool isLast = key + 1 == field.keys.size();
  Draft alone = without(field);
  alone.set(name, JSONValue());
  Draft all = withNullsBefore(field, field.keys.size());
  const auto refusal = model_.refusalOfNull(field.type);
  if (field.rule != Rule::required || (isLast && !refusal)) {
    accepts(what, alone);
    accepts(what, all);
  } else if (isLast) {
    refuses(what, alone, refusal->under(name));
    refuses(what, all, refusal->under(name));
  } else {
    refuses(what, alone, missingKeyOf(field));
  }
}

void RecordCheck::checkAbsence(const ExpectedField& field) {
  if (field.rule == Rule::required) {
    refuses("absent", without(field), missingKeyOf(field));
  } else {
    accepts("absent", without(field));
  }
}

void RecordCheck::checkOtherSpellings(const ExpectedField& field, std::size_t position) {
  std::set<std::string> known{"type"};
  for (const auto& other : definition_.fields) known.insert(other.keys.begin(), other.keys.end());
  for (const auto& key : field.keys) {
    for (const auto& spelling : otherSpellingsOf(key)) {
      if (known.contains(spelling)) continue;
      Draft draft = without(field);
      draft.set(spelling, model_.sample(field.type, firstSeed.at(position)));
      if (field.rule == Rule::required) {
        refuses("only " + spelling, draft, missingKeyOf(field));
      } else {
        accepts("only " + spelling, draft);
      }
    }
  }
}

void RecordCheck::checkEmptyAndPartialLists(const ExpectedField& field, std::size_t position) {
  const std::string& key = field.keys.front();
  Draft draft = without(field);
  if (field.type.shape == Shape::single && field.type.name == "text") {
    draft.set(key, "");
    accepts("an empty text", draft);
  } else if (field.type.shape == Shape::map) {
    draft.set(key, JSONValue::object());
    accepts("an empty map", draft);
  } else if (field.type.shape != Shape::single) {
    draft.set(key, JSONValue::array());
    accepts("an empty list", draft);
  }
  if (field.type.shape != Shape::lossyList) return;
  const auto good = [&](std::size_t at) { return model_.sample(field.type.element(), firstSeed.at(position).at(at)); };
  for (const auto& refusal : model_.refusals(field.type.element(), firstSeed)) {
    Draft partly = draft;
    partly.set(key, JSONValue::array({good(1), refusal.input, JSONValue(), good(2)}));
    Draft meaning = draft;
    meaning.set(key, JSONValue::array({good(1), good(2)}));
    accepts("a list with bad elements", partly, meaning);
  }
}

}  // namespace ormel::tests
