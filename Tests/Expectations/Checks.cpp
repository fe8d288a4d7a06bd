#include "Expectations/Checks.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <utility>

#include "Expectations/RecordCheck.h"
#include "Expectations/WireModel.h"

namespace ormel::tests {

namespace {

using Kind = DecodingError::Kind;
using Path = std::vector<std::string>;

const Path here;

std::string lowercase(std::string text) {
  for (char& byte : text) byte = static_cast<char>(std::tolower(byte));
  return text;
}

std::string uppercase(std::string text) {
  for (char& byte : text) byte = static_cast<char>(std::toupper(byte));
  return text;
}

/// "inProgress" with a separator before each capital.
std::string separated(const std::string& word, char separator) {
  std::string text;
  for (const char byte : word) {
    if (std::isupper(byte)) text += separator;
    text += static_cast<char>(std::tolower(byte));
  }
  return text;
}

/// Spellings with the same canonical form.
std::vector<std::string> sameWords(const std::string& word) {
  return {lowercase(word),      uppercase(word),          separated(word, '_'),
          separated(word, '-'), "\n\t " + word + " \r\n", "_" + word + "-"};
}

std::vector<std::string> otherWords(const std::string& word) {
  std::string apart = word;
  apart.insert(1, " ");
  return {apart, word + "x", "x" + word, word.substr(0, word.size() - 1), word.substr(1)};
}

std::string canonical(const std::string& word) {
  std::string text;
  for (const char byte : word) {
    if (byte != '_' && byte != '-' && !std::isspace(byte)) text += static_cast<char>(std::tolower(byte));
  }
  return text;
}

class WordCheck {
 public:
  WordCheck(const Definition& definition, const RegisteredType& type, Findings& findings)
      : definition_(definition), type_(type), findings_(findings) {}

  void checkCases() {
    std::set<std::string> expected, found;
    for (const auto& word : definition_.words) expected.insert(word.caseName);
    for (const auto& registered : type_.cases) found.insert(registered.name);
    for (const auto& name : expected) {
      if (!found.contains(name)) add(name, "there is no such case");
    }
    for (const auto& name : found) {
      if (!expected.contains(name)) add(name, "the case is not expected");
    }
    for (const auto& word : definition_.words) checkCase(word);
  }

  void checkEnumeration() {
    for (const auto& word : definition_.words) {
      if (word.word == anyWord) continue;
      reads(word.word, word.caseName);
      const bool isTolerant = definition_.kind == Definition::Kind::tolerant;
      for (const auto& same : sameWords(word.word)) {
        if (isTolerant) {
          reads(same, word.caseName);
        } else {
          readsUnknown(same);
        }
      }
      for (const auto& other : otherWords(word.word)) readsUnknown(other);
    }
    for (const char* unknown : {"weird", "", " "}) readsUnknown(unknown);
    refuses(3, Kind::typeMismatch);
    refuses(JSONValue::array(), Kind::typeMismatch);
    refuses(JSONValue(), Kind::valueNotFound);
    if (definition_.within) {
      checkObject(*definition_.within);
    } else {
      refuses(JSONValue::object(), Kind::typeMismatch);
    }
  }

  void checkVocabulary() {
    std::vector<std::string> all{"futureWord", "", " Some_Thing "};
    for (const auto& word : definition_.words) {
      all.push_back(word.word);
      all.push_back(uppercase(word.word));
    }
    for (const auto& word : all) {
      const JSONValue written = type_.encode(type_.decode(JSONValue(word)).get());
      if (written != JSONValue(word)) add(word, "is written " + written.encode());
    }
    refuses(3, Kind::typeMismatch);
    refuses(JSONValue::object(), Kind::typeMismatch);
    refuses(JSONValue(), Kind::valueNotFound);
  }

 private:
  void add(const std::string& where, const std::string& what) { findings_.add({definition_.name + "." + where, what}); }

  void checkCase(const ExpectedWord& word) {
    for (const auto& registered : type_.cases) {
      if (registered.name != word.caseName || !word.isWritten) continue;
      if (registered.word != word.word) add(word.caseName, "has the word " + registered.word);
      if (registered.written != JSONValue(word.word)) add(word.caseName, "is written " + registered.written.encode());
    }
  }

  bool isKnown(const std::string& text) const {
    return std::any_of(definition_.words.begin(), definition_.words.end(), [&](const auto& word) {
      return definition_.kind == Definition::Kind::tolerant ? canonical(word.word) == canonical(text)
                                                            : word.word == text;
    });
  }

  bool isWrittenFor(const std::string& caseName, const JSONValue& written) const {
    return std::any_of(definition_.words.begin(), definition_.words.end(), [&](const auto& word) {
      const bool isThisWord = word.word == anyWord || (word.isWritten && JSONValue(word.word) == written);
      return word.caseName == caseName && isThisWord;
    });
  }

  void reads(const std::string& word, const std::string& caseName, const JSONValue& input) {
    try {
      const Erased value = type_.decode(input);
      const std::string found = type_.caseName(value.get());
      if (found != caseName) add(word, "is read as " + found + " instead of " + caseName);
      const JSONValue written = type_.encode(value.get());
      if (!isWrittenFor(caseName, written)) add(word, "is written " + written.encode());
    } catch (const DecodingError& error) {
      add(word, std::string("is refused: ") + error.what());
    }
  }
  void reads(const std::string& word, const std::string& caseName) { reads(word, caseName, JSONValue(word)); }

  void readsUnknown(const std::string& word) {
    const bool isApartOnly = canonical(word) != word && word.find(' ') != std::string::npos;
    if (isKnown(word) && !(isApartOnly && word.front() != ' ' && word.back() != ' ')) return;
    if (definition_.unknown.rule == ExpectedUnknown::Rule::isCase) return reads(word, definition_.unknown.name);
    refuses(word, Kind::dataCorrupted, {}, failureOfWord(definition_.unknown, word));
  }

  void refuses(const JSONValue& input, Kind kind, std::vector<std::string> path = {},
               std::optional<std::string> description = std::nullopt, std::string key = "") {
    const Refusal refusal{input, kind, std::move(path), std::move(key), std::move(description)};
    const std::string difference = differenceFrom(refusal, type_, input);
    if (!difference.empty()) add(input.encode(), difference);
  }

  void checkObject(const std::string& key) {
    const auto object = [&](const JSONValue& value) { return JSONValue::object({{key, value}}); };
    for (const auto& word : definition_.words) reads(word.word, word.caseName, object(word.word));
    refuses(object("weird"), Kind::dataCorrupted, {key}, failureOfWord(definition_.unknown, "weird"));
    refuses(object(3), Kind::typeMismatch, {key});
    refuses(object(JSONValue()), Kind::valueNotFound, {key});
    refuses(JSONValue::object(), Kind::keyNotFound, {}, std::nullopt, key);
  }

  const Definition& definition_;
  const RegisteredType& type_;
  Findings& findings_;
};

void checkNonObjects(const Definition& definition, const RegisteredType& type, Findings& findings) {
  for (const JSONValue& input : {JSONValue("text"), JSONValue(3), JSONValue(true), JSONValue::array()}) {
    const std::string difference = differenceFrom({input, Kind::typeMismatch, here, {}, {}}, type, input);
    if (!difference.empty()) findings.add({definition.name, input.encode() + " " + difference});
  }
  const std::string difference = differenceFrom({JSONValue(), Kind::valueNotFound, here, {}, {}}, type, JSONValue());
  if (!difference.empty()) findings.add({definition.name, "null " + difference});
}

void checkUnknownType(const Definition& definition, const RegisteredType& type, const std::string& word,
                      Findings& findings) {
  using Rule = ExpectedUnknown::Rule;
  const auto& unknown = definition.unknown;
  const auto add = [&](const std::string& what) { findings.add({definition.name + "/" + word, what}); };
  const auto refuses = [&](const JSONValue& input, std::optional<Path> path) {
    const Refusal refusal{input, Kind::dataCorrupted, std::move(path), {}, failureOfWord(unknown, word)};
    const std::string difference = differenceFrom(refusal, type, input);
    if (!difference.empty()) add(input.encode() + " " + difference);
  };
  const JSONValue input =
      JSONValue::object({{"type", word}, {"id", "x"}, {"more", JSONValue::array({1, JSONValue()})}});
  const auto reads = [&](const JSONValue& expected) {
    const JSONValue written = type.encode(type.decode(input).get());
    if (written != expected) add("is written " + written.encode());
  };
  try {
    if (unknown.rule == Rule::keepsType) {
      reads(JSONValue::object({{"type", word}}));
      const std::string alternative = type.caseName(type.decode(input).get());
      if (alternative != unknown.name) add("is kept in " + alternative);
    } else if (unknown.rule == Rule::keepsEverything) {
      reads(input);
      for (const JSONValue& id : {JSONValue(), JSONValue(3)}) {
        refuses(JSONValue::object({{"type", word}, {"id", id}}), Path{"type"});
      }
      refuses(JSONValue::object({{"type", word}}), Path{"type"});
    } else {
      refuses(input, std::nullopt);
    }
  } catch (const DecodingError& error) {
    add(std::string("is refused: ") + error.what());
  }
}

RecordCheck caseCheck(const WireModel& model, const RegisteredType& type, const ExpectedCase& variantCase,
                      const std::string& word, Findings& findings) {
  RecordCheck record(model, model.definition(variantCase.fields), type, findings);
  record.asCase(variantCase, word);
  return record;
}

void checkCasesDiffer(const WireModel& model, const Definition& definition, const RegisteredType& type,
                      Findings& findings) {
  std::vector<std::pair<std::string, Erased>> values;
  for (const auto& variantCase : definition.cases) {
    Draft draft = model.samples(model.definition(variantCase.fields), {});
    draft.set("type", variantCase.words.front());
    Erased value = type.decode(draft.object());
    for (const auto& [other, otherValue] : values) {
      if (type.areEqual(value.get(), otherValue.get())) {
        findings.add({definition.name + "/" + variantCase.alternative, "equals " + other});
      }
    }
    values.emplace_back(variantCase.alternative, std::move(value));
  }
}

void checkVariant(const WireModel& model, const Definition& definition, const RegisteredType& type,
                  Findings& findings) {
  std::set<std::string> words;
  for (const auto& variantCase : definition.cases) words.insert(variantCase.words.begin(), variantCase.words.end());
  for (const auto& variantCase : definition.cases) {
    for (const auto& word : variantCase.words) {
      caseCheck(model, type, variantCase, word, findings).checkWhole();
      for (const auto& others : {sameWords(word), otherWords(word)}) {
        for (const auto& other : others) {
          if (!words.contains(other)) checkUnknownType(definition, type, other, findings);
        }
      }
    }
  }
  checkCasesDiffer(model, definition, type, findings);
  checkUnknownType(definition, type, "", findings);
  for (const auto& refusal : model.refusals({ExpectedType::Shape::single, definition.name}, {})) {
    const std::string difference = differenceFrom(refusal, type, refusal.input);
    if (!difference.empty()) findings.add({definition.name, refusal.input.encode() + " " + difference});
  }
  checkNonObjects(definition, type, findings);
  for (const auto& variantCase : definition.cases) {
    caseCheck(model, type, variantCase, variantCase.words.front(), findings).checkFields();
  }
}

void checkSpecial(const Definition& definition, const RegisteredType& type, Findings& findings) {
  for (const auto& reading : definition.readings) {
    const auto add = [&](const std::string& what) {
      findings.add({definition.name, reading.input.encode() + " " + what});
    };
    if (reading.refusal) {
      const std::string difference = differenceFrom(refusalOf(reading), type, reading.input);
      if (!difference.empty()) add(difference);
      continue;
    }
    try {
      const JSONValue written = type.encode(type.decode(reading.input).get());
      if (written != reading.written) add("is written " + written.encode());
    } catch (const DecodingError& error) {
      add(std::string("is refused: ") + error.what());
    }
  }
}

void checkRecord(const WireModel& model, const Definition& definition, const RegisteredType& type,
                 std::optional<std::size_t> field, Findings& findings) {
  RecordCheck record(model, definition, type, findings);
  record.checkWhole();
  record.checkFields(field);
  checkNonObjects(definition, type, findings);
}

void checkKind(const WireModel& model, const Definition& definition, const RegisteredType& type,
               std::optional<std::size_t> field, Findings& findings) {
  WordCheck words(definition, type, findings);
  switch (definition.kind) {
    case Definition::Kind::fields:
      return;
    case Definition::Kind::record:
      return checkRecord(model, definition, type, field, findings);
    case Definition::Kind::closed:
    case Definition::Kind::tolerant:
    case Definition::Kind::exact:
      words.checkCases();
      return words.checkEnumeration();
    case Definition::Kind::vocabulary:
      words.checkCases();
      return words.checkVocabulary();
    case Definition::Kind::variant:
      return checkVariant(model, definition, type, findings);
    case Definition::Kind::special:
      return checkSpecial(definition, type, findings);
  }
}

}  // namespace

std::vector<Finding> check(const Catalog& catalog, const Definition& definition, const RegisteredType& type,
                           const CheckScope& scope) {
  Findings findings(scope.most);
  try {
    checkKind(WireModel(catalog), definition, type, scope.field, findings);
  } catch (const Findings::Enough&) {
    // The rest would not be read.
  }
  return findings.take();
}

}  // namespace ormel::tests
