#include "Expectations/Catalog.h"

#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace ormel::tests {

namespace {

using Words = std::vector<std::string>;

const std::map<std::string, Definition::Kind, std::less<>> kinds{
    {"fields", Definition::Kind::fields},   {"record", Definition::Kind::record},
    {"closed", Definition::Kind::closed},   {"tolerant", Definition::Kind::tolerant},
    {"exact", Definition::Kind::exact},     {"vocabulary", Definition::Kind::vocabulary},
    {"variant", Definition::Kind::variant}, {"special", Definition::Kind::special},
};

const std::set<std::string, std::less<>> plainTypes{"text", "int", "number", "bool", "json"};

[[noreturn]] void refuse(const std::string& what) { throw std::runtime_error(what); }

void require(bool condition, const std::string& what) {
  if (!condition) refuse(what);
}

Words split(std::string_view text, char separator) {
  Words parts;
  std::istringstream stream{std::string(text)};
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

/// The text before `separator`, which goes away with it; all of it if there is none.
std::string takeUntil(std::string& rest, std::string_view separator) {
  const auto at = rest.find(separator);
  std::string taken = rest.substr(0, at);
  rest = at == std::string::npos ? "" : rest.substr(at + separator.size());
  return taken;
}

ExpectedType parseType(std::string text) {
  using Shape = ExpectedType::Shape;
  const auto inside = [&](std::size_t atEnd) { return text.substr(1, text.size() - 1 - atEnd); };
  if (text.starts_with('[') && text.ends_with("~]")) return {Shape::lossyList, inside(2)};
  if (text.starts_with('[') && text.ends_with(']')) return {Shape::list, inside(1)};
  if (text.starts_with('{') && text.ends_with('}')) return {Shape::map, inside(1)};
  return {Shape::single, std::move(text)};
}

/// "id" alone, or "first/second", or "first/second->written"; "=" for the field's own name.
void parseKeys(const std::string& text, ExpectedField& field) {
  std::string rest = text == "=" ? field.name : text;
  field.keys = split(takeUntil(rest, "->"), '/');
  field.writtenKey = rest.empty() ? field.keys.front() : rest;
}

void parseRule(std::istringstream& line, ExpectedField& field) {
  using Rule = ExpectedField::Rule;
  std::string rule;
  line >> rule;
  const std::string value = rule.substr(std::min(rule.size(), rule.find('=') + 1));
  if (rule == "required") {
    field.rule = Rule::required;
  } else if (rule == "optional") {
    field.rule = Rule::optional;
  } else if (rule == "null-when-absent") {
    field.rule = Rule::nullWhenAbsent;
  } else if (rule.starts_with("default=")) {
    field.rule = Rule::defaulted;
    field.fallback = JSONValue::decode(value);
  } else if (rule.starts_with("true-when=")) {
    field.rule = Rule::trueWhen;
    field.otherKey = value;
  } else {
    refuse("no such rule: " + rule);
  }
  if (line >> rule) {
    require(rule == "omitted-when-empty", "no such rule: " + rule);
    field.isOmittedWhenEmpty = true;
  }
}

void addField(const std::string& text, Definition& definition) {
  std::istringstream line(text);
  ExpectedField field;
  std::string keys, type;
  require(static_cast<bool>(line >> field.name >> keys), "a field without keys");
  if (field.name == "type" && line.peek() == std::istringstream::traits_type::eof()) {
    definition.writtenType = keys;
    return;
  }
  require(static_cast<bool>(line >> type), "a field without a type");
  parseKeys(keys, field);
  field.type = parseType(type);
  parseRule(line, field);
  definition.fields.push_back(std::move(field));
}

void addWords(const std::string& text, Definition& definition) {
  std::istringstream line(text);
  for (std::string token; line >> token;) {
    const std::string caseName = takeUntil(token, ":");
    bool isWritten = true;
    for (const auto& word : split(token.empty() ? caseName : token, '/')) {
      definition.words.push_back({caseName, word, isWritten && word != anyWord});
      isWritten = false;
    }
  }
}

/// "case <fields> <words>", with "->" and the word written or "none", and "in" and the alternative.
void addCase(const std::string& text, Definition& definition) {
  std::istringstream line(text);
  ExpectedCase added;
  std::string words, in;
  require(static_cast<bool>(line >> added.fields >> words), "a case without words");
  added.alternative = added.fields;
  if (line >> in) require(in == "in" && static_cast<bool>(line >> added.alternative), "a case with an odd end");
  added.words = split(takeUntil(words, "->"), '/');
  if (words != "none") added.writtenWord = words.empty() ? added.words.front() : words;
  definition.cases.push_back(std::move(added));
}

void addUnknown(std::string rest, Definition& definition) {
  using Rule = ExpectedUnknown::Rule;
  auto& unknown = definition.unknown;
  if (rest.starts_with("fails ")) {
    unknown = {Rule::fails, rest.substr(6), ""};
  } else if (rest.starts_with("is ")) {
    unknown = {Rule::isCase, "", rest.substr(3)};
  } else if (rest.starts_with("keeps type in ")) {
    unknown = {Rule::keepsType, "", rest.substr(14)};
  } else if (rest.starts_with("keeps everything with id or fails ")) {
    unknown = {Rule::keepsEverything, rest.substr(34), ""};
  } else {
    refuse("no such rule for unknown words: " + rest);
  }
}

/// "reads <json>" with "as <json>", "fails <json> with <text>", "lacks <json> without <key>", "mismatches <json>".
void addReading(const std::string& verb, std::string rest, Definition& definition) {
  using Refused = ExpectedReading::Refused;
  static const std::map<std::string, std::pair<std::string, std::optional<Refused>>, std::less<>> verbs{
      {"reads", {" as ", std::nullopt}},
      {"fails", {" with ", Refused::asCorrupted}},
      {"lacks", {" without ", Refused::forMissingKey}},
      {"mismatches", {" at ", Refused::asMismatch}},
  };
  const auto found = verbs.find(verb);
  require(found != verbs.end(), "no such line of a special form: " + verb);
  const auto& [separator, refusal] = found->second;
  const JSONValue input = JSONValue::decode(takeUntil(rest, separator));
  if (refusal) {
    definition.readings.push_back({input, JSONValue(), refusal, rest});
  } else {
    definition.readings.push_back({input, rest.empty() ? input : JSONValue::decode(rest), std::nullopt, ""});
  }
}

Definition begin(const std::string& text) {
  std::istringstream line(text);
  std::string kind;
  Definition definition;
  line >> kind >> definition.name;
  require(kinds.contains(kind) && !definition.name.empty(), "no such definition: " + text);
  definition.kind = kinds.find(kind)->second;
  if (definition.isEnumeration()) {
    definition.unknown.failure = "Cannot initialize " + definition.name + " from invalid String value {}";
  }
  return definition;
}

bool isRuleForUnknown(const std::string& rest) {
  return rest.starts_with("fails ") || rest.starts_with("is ") || rest.starts_with("keeps ");
}

void addLine(const std::string& whole, Definition& definition) {
  using Kind = Definition::Kind;
  std::string rest = whole;
  const std::string first = takeUntil(rest, " ");
  const bool hasWords = definition.isEnumeration() || definition.kind == Kind::variant;
  if (hasWords && first == "unknown" && isRuleForUnknown(rest)) {
    addUnknown(rest, definition);
  } else if (definition.kind == Kind::variant) {
    require(first == "case", "no such line of a variant: " + whole);
    addCase(rest, definition);
  } else if (definition.kind == Kind::special) {
    addReading(first, rest, definition);
  } else if (definition.isEnumeration() && first == "within") {
    definition.within = rest;
  } else if (definition.isEnumeration() || definition.kind == Kind::vocabulary) {
    addWords(whole, definition);
  } else {
    addField(whole, definition);
  }
}

std::string trimmedLine(const std::string& line) {
  const auto start = line.find_first_not_of(' ');
  return start == std::string::npos ? "" : line.substr(start, line.find_last_not_of(' ') + 1 - start);
}

void checkReference(const Catalog& catalog, const Definition& from, const std::string& name) {
  require(catalog.contains(name), from.name + " refers to " + name + ", which is not defined");
}

void checkReferences(const Catalog& catalog) {
  for (const auto& [name, definition] : catalog) {
    for (const auto& field : definition.fields) {
      if (!plainTypes.contains(field.type.name)) checkReference(catalog, definition, field.type.name);
    }
    for (const auto& variantCase : definition.cases) checkReference(catalog, definition, variantCase.fields);
  }
}

void readDefinitions(const std::filesystem::path& file, Catalog& catalog) {
  std::ifstream stream(file);
  require(stream.is_open(), "cannot read " + file.string());
  Definition* definition = nullptr;
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    const std::string text = trimmedLine(line);
    if (text.empty() || text.starts_with('#')) continue;
    try {
      if (line.starts_with(' ')) {
        require(definition != nullptr, "a line before any definition");
        addLine(text, *definition);
      } else {
        Definition begun = begin(text);
        begun.file = file.stem().string();
        const std::string name = begun.name;
        const auto [place, isNew] = catalog.emplace(name, std::move(begun));
        require(isNew, name + " is defined twice");
        definition = &place->second;
      }
    } catch (const std::exception& error) {
      refuse(file.string() + ":" + std::to_string(number) + ": " + error.what());
    }
  }
}

}  // namespace

Catalog readCatalog(const std::filesystem::path& folder) {
  Catalog catalog;
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    if (file.path().extension() == ".txt") readDefinitions(file.path(), catalog);
  }
  checkReferences(catalog);
  return catalog;
}

}  // namespace ormel::tests
