#include "Expectations/WireModel.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace ormel::tests {

namespace {

using Kind = DecodingError::Kind;
using Shape = ExpectedType::Shape;

const std::vector<std::string> atValue;
const JSONValue emptyList = JSONValue::array();
const JSONValue emptyObject = JSONValue::object();

Refusal mismatch(JSONValue input) { return {std::move(input), Kind::typeMismatch, atValue, {}, {}}; }
Refusal corrupted(JSONValue input) { return {std::move(input), Kind::dataCorrupted, atValue, {}, {}}; }

Refusal missing(JSONValue input, std::string key) {
  return {std::move(input), Kind::keyNotFound, atValue, std::move(key), {}};
}

Draft draftOf(const JSONValue& object) {
  Draft draft;
  for (const auto& [key, value] : *object.objectValue()) draft.set(key, value);
  return draft;
}

JSONValue listOf(const std::vector<JSONValue>& elements) { return JSONValue::array(elements); }

JSONValue mapOf(const std::vector<JSONValue>& elements) {
  Draft draft;
  for (std::size_t at = 0; at < elements.size(); ++at) draft.set("entry" + std::to_string(at), elements[at]);
  return draft.object();
}

bool isEmpty(const JSONValue& value) {
  if (const auto text = value.stringValue()) return text->empty();
  const auto* array = value.arrayValue();
  return value == emptyObject || (array && array->size() == 0);
}

template <typename Rows>
const auto& pick(const Rows& rows, Seed seed) {
  return rows[static_cast<std::size_t>(seed.number + seed.variation) % rows.size()];
}

std::vector<std::string> readableWords(const Definition& enumeration) {
  std::vector<std::string> words;
  for (const auto& word : enumeration.words) {
    if (word.word != anyWord) words.push_back(word.word);
  }
  return words;
}

/// The word that is written for the case that another word is read as.
JSONValue writtenWord(const Definition& enumeration, const JSONValue& value) {
  for (const auto& read : enumeration.words) {
    if (value != JSONValue(read.word)) continue;
    for (const auto& word : enumeration.words) {
      if (word.caseName == read.caseName && word.isWritten) return word.word;
    }
  }
  return value;
}

JSONValue plainSample(const std::string& type, Seed seed) {
  const int number = seed.number * 10 + seed.variation;
  if (type == "text") return "text " + std::to_string(number);
  if (type == "int") return number;
  if (type == "number") return number + 0.5;
  if (type == "bool") return seed.variation % 2 == 0;
  return JSONValue::object({{"kept", JSONValue::array({JSONValue(), JSONValue(number)})}});
}

std::vector<Refusal> plainRefusals(const std::string& type) {
  if (type == "text") return {mismatch(3), mismatch(emptyObject)};
  if (type == "int") return {mismatch("3"), mismatch(true), corrupted(0.5), corrupted(1e300)};
  if (type == "number") return {mismatch("3"), mismatch(true)};
  if (type == "bool") return {mismatch(1), mismatch("true")};
  return {};
}

bool isPlain(const std::string& type) {
  static const std::set<std::string, std::less<>> plain{"text", "int", "number", "bool", "json"};
  return plain.contains(type);
}

}  // namespace

void Draft::set(std::string_view key, JSONValue value) {
  remove(key);
  members_.emplace_back(key, std::move(value));
}

void Draft::remove(std::string_view key) {
  std::erase_if(members_, [&](const auto& member) { return member.first == key; });
}

const JSONValue* Draft::find(std::string_view key) const {
  const auto found =
      std::find_if(members_.begin(), members_.end(), [&](const auto& member) { return member.first == key; });
  return found == members_.end() ? nullptr : &found->second;
}

JSONValue Draft::object() const {
  std::vector<JSONMemberInit> members;
  for (const auto& [key, value] : members_) members.emplace_back(key, value);
  return JSONValue::object(members);
}

Refusal Refusal::under(const std::string& parent) const {
  Refusal moved = *this;
  if (moved.path) moved.path->insert(moved.path->begin(), parent);
  return moved;
}

Refusal refusalOf(const ExpectedReading& reading) {
  using Refused = ExpectedReading::Refused;
  if (reading.refusal == Refused::asMismatch) return mismatch(reading.input);
  if (reading.refusal == Refused::forMissingKey) return missing(reading.input, reading.failure);
  Refusal refusal = corrupted(reading.input);
  refusal.description = reading.failure;
  return refusal;
}

std::string failureOfWord(const ExpectedUnknown& unknown, std::string_view word) {
  std::string failure = unknown.failure;
  return failure.replace(failure.find("{}"), 2, word);
}

JSONValue WireModel::singleSample(const std::string& type, Seed seed) const {
  if (isPlain(type)) return plainSample(type, seed);
  const Definition& named = definition(type);
  switch (named.kind) {
    case Definition::Kind::fields:
    case Definition::Kind::record:
      return samples(named, seed).object();
    case Definition::Kind::closed:
    case Definition::Kind::tolerant:
    case Definition::Kind::exact:
      return pick(readableWords(named), seed);
    case Definition::Kind::vocabulary:
      return "Word_that no list has " + std::to_string(seed.number * 10 + seed.variation);
    case Definition::Kind::special: {
      std::vector<JSONValue> inputs;
      for (const auto& reading : named.readings) {
        if (!reading.refusal && !reading.input.isNull()) inputs.push_back(reading.input);
      }
      return pick(inputs, seed);
    }
    case Definition::Kind::variant: {
      std::vector<ExpectedCase> readable;
      std::copy_if(named.cases.begin(), named.cases.end(), std::back_inserter(readable),
                   [](const auto& variantCase) { return variantCase.writtenWord.has_value(); });
      const ExpectedCase& chosen = pick(readable, seed);
      Draft draft = samples(definition(chosen.fields), seed);
      draft.set("type", chosen.words.front());
      return draft.object();
    }
  }
  return JSONValue();
}

JSONValue WireModel::sample(const ExpectedType& type, Seed seed) const {
  if (type.shape == Shape::single) return singleSample(type.name, seed);
  const std::vector elements{singleSample(type.name, seed.at(0)), singleSample(type.name, seed.at(1))};
  return type.shape == Shape::map ? mapOf(elements) : listOf(elements);
}

Draft WireModel::samples(const Definition& record, Seed seed) const {
  Draft draft;
  for (std::size_t at = 0; at < record.fields.size(); ++at) {
    const ExpectedField& field = record.fields[at];
    draft.set(field.keys.front(), sample(field.type, seed.at(at)));
  }
  return draft;
}

void WireModel::addRefusals(const Definition& named, Seed seed, std::vector<Refusal>& refusals) const {
  const auto addAll = [&](std::initializer_list<Refusal> more) { refusals.insert(refusals.end(), more); };
  if (named.kind == Definition::Kind::special) {
    for (const auto& reading : named.readings) {
      if (reading.refusal && !reading.input.isNull()) refusals.push_back(refusalOf(reading));
    }
  } else if (named.isEnumeration() || named.kind == Definition::Kind::vocabulary) {
    refusals.push_back(mismatch(3));
    if (!named.within) refusals.push_back(mismatch(emptyObject));
    if (named.within) addAll({missing(emptyObject, *named.within)});
    if (named.isEnumeration() && named.unknown.rule == ExpectedUnknown::Rule::fails) {
      refusals.push_back({"weird", Kind::dataCorrupted, atValue, {}, failureOfWord(named.unknown, "weird")});
    }
  } else if (named.kind == Definition::Kind::variant) {
    addAll(
        {mismatch(emptyList), missing(emptyObject, "type"), mismatch(JSONValue::object({{"type", 3}})).under("type")});
  } else {
    addAll({mismatch(emptyList), mismatch("text")});
    Draft full = samples(named, seed);
    for (const auto& field : named.fields) {
      if (field.rule != ExpectedField::Rule::required) continue;
      Draft without = full;
      for (const auto& key : field.keys) without.remove(key);
      refusals.push_back(missing(without.object(), field.keys.back()));
    }
  }
}

std::vector<Refusal> WireModel::refusals(const ExpectedType& type, Seed seed) const {
  if (type.shape == Shape::single) {
    if (isPlain(type.name)) return plainRefusals(type.name);
    std::vector<Refusal> refusals;
    addRefusals(definition(type.name), seed, refusals);
    return refusals;
  }
  std::vector<Refusal> all{mismatch(type.shape == Shape::map ? emptyList : emptyObject), mismatch("text")};
  if (type.shape == Shape::lossyList) return all;
  auto ofElement = refusals(type.element(), seed);
  if (auto ofNull = refusalOfNull(type.element())) ofElement.push_back(*ofNull);
  for (const auto& refusal : ofElement) {
    const bool isMap = type.shape == Shape::map;
    const std::vector elements{singleSample(type.name, seed), refusal.input};
    Refusal moved = refusal.under(isMap ? "entry1" : "Index 1");
    moved.input = isMap ? mapOf(elements) : listOf(elements);
    all.push_back(std::move(moved));
  }
  return all;
}

std::optional<Refusal> WireModel::refusalOfNull(const ExpectedType& type) const {
  const Refusal refusal{JSONValue(), Kind::valueNotFound, atValue, {}, {}};
  if (type.shape != Shape::single) return refusal;
  if (type.name == "json") return std::nullopt;
  if (isPlain(type.name)) return refusal;
  for (const auto& reading : definition(type.name).readings) {
    if (!reading.input.isNull()) continue;
    return reading.refusal ? std::optional(refusalOf(reading)) : std::nullopt;
  }
  return refusal;
}

JSONValue WireModel::writtenCase(const Definition& variant, const JSONValue& value) const {
  const JSONValue* const type = value.find("type");
  for (const auto& variantCase : variant.cases) {
    for (const auto& word : variantCase.words) {
      if (*type != JSONValue(word)) continue;
      return writtenMembers(definition(variantCase.fields), draftOf(value), variantCase.writtenWord).object();
    }
  }
  return value;
}

JSONValue WireModel::writtenSingle(const std::string& type, const JSONValue& value) const {
  if (isPlain(type)) return value;
  const Definition& named = definition(type);
  if (named.kind == Definition::Kind::variant) return writtenCase(named, value);
  if (named.kind == Definition::Kind::record) {
    return writtenMembers(named, draftOf(value), named.writtenType).object();
  }
  if (named.isEnumeration()) return writtenWord(named, value);
  for (const auto& reading : named.readings) {
    if (reading.input == value) return reading.written;
  }
  return value;
}

JSONValue WireModel::written(const ExpectedType& type, const JSONValue& value) const {
  if (type.shape == Shape::single) return writtenSingle(type.name, value);
  if (type.shape == Shape::map) {
    Draft draft;
    for (const auto& [key, entry] : *value.objectValue()) draft.set(key, writtenSingle(type.name, entry));
    return draft.object();
  }
  std::vector<JSONValue> elements;
  for (const auto& element : *value.arrayValue()) elements.push_back(writtenSingle(type.name, element));
  return listOf(elements);
}

std::optional<JSONValue> WireModel::found(const ExpectedField& field, const Draft& draft) const {
  for (const auto& key : field.keys) {
    const JSONValue* value = draft.find(key);
    if (value && !value->isNull()) return *value;
  }
  const bool takesNull = field.rule == ExpectedField::Rule::required && !refusalOfNull(field.type);
  return takesNull && draft.find(field.keys.back()) ? std::optional(JSONValue()) : std::nullopt;
}

std::optional<JSONValue> WireModel::valueOf(const ExpectedField& field, const Draft& draft) const {
  const auto value = found(field, draft);
  if (value) return written(field.type, *value);
  if (field.rule == ExpectedField::Rule::defaulted) return field.fallback;
  if (field.rule == ExpectedField::Rule::trueWhen) {
    const JSONValue* other = draft.find(field.otherKey);
    return other && !other->isNull();
  }
  return std::nullopt;
}

Draft WireModel::writtenMembers(const Definition& record, const Draft& draft,
                                const std::optional<std::string>& type) const {
  Draft members;
  if (type) members.set("type", *type);
  for (const auto& field : record.fields) {
    const auto value = valueOf(field, draft);
    if (value && field.isOmittedWhenEmpty && isEmpty(*value)) continue;
    if (value) {
      members.set(field.writtenKey, *value);
    } else if (field.rule == ExpectedField::Rule::nullWhenAbsent) {
      members.set(field.writtenKey, JSONValue());
    }
  }
  return members;
}

FoundFields WireModel::fields(const Definition& record, const Draft& draft) const {
  FoundFields all;
  for (const auto& field : record.fields) all.push_back({field.name, valueOf(field, draft)});
  return all;
}

}  // namespace ormel::tests
