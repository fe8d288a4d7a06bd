// Changes the library's tables row by row and tells which changes the expectations do not notice.

#include <cstdio>
#include <exception>
#include <set>
#include <string>
#include <utility>

#include "Expectations/Checks.h"
#include "TableMutants/TableMutants.h"

namespace {

using namespace ormel;

/// The definitions that speak of a type: its own, and the variants that have it as a case.
std::set<std::string> definitionsOf(const tests::Catalog& catalog, const std::string& type) {
  std::set<std::string> names;
  if (tests::registry().find(type)) names.insert(type);
  for (const auto& [name, definition] : catalog) {
    for (const auto& variantCase : definition.cases) {
      if (variantCase.fields == type || variantCase.alternative == type) names.insert(name);
    }
  }
  if (!names.empty()) return names;
  // Words that are no value on the wire by themselves are part of a form of its own kind.
  for (const auto& [name, definition] : catalog) {
    const bool isOfItsOwnKind = definition.kind == tests::Definition::Kind::special;
    if (isOfItsOwnKind || definition.kind == tests::Definition::Kind::vocabulary) names.insert(name);
  }
  return names;
}

/// Whether a field of this type, which is always there, has no empty value.
bool isNeverEmpty(const tests::ExpectedField& field) {
  using Rule = tests::ExpectedField::Rule;
  const bool isAlwaysThere = field.rule != Rule::optional && field.rule != Rule::nullWhenAbsent;
  const bool isList = field.type.shape != tests::ExpectedType::Shape::single;
  return isAlwaysThere && !isList && field.type.name != "text" && field.type.name != "bool";
}

/// Whether the record of a case says its type itself, whatever the variant would write.
bool saysItsOwnType(const tests::Catalog& catalog, const tests::Definition& variant, const std::string& word) {
  for (const auto& variantCase : variant.cases) {
    if (variantCase.words.front() == word) return catalog.at(variantCase.fields).writtenType.has_value();
  }
  return false;
}

/// Changes that no reading shows, with the reason and what notices them instead.
const std::set<std::pair<std::string, std::string>> unseenByReading{
    // A text without marked ranges becomes the plain case. `UserInputTests` writes one that code has made.
    {"UserInputTextElements", "textElements with another form when empty"},
    // Every text is read by the table of the marked ones, which stands first.
    {"UserInputText", "text misspelt texte"},
    {"UserInputText", "text with another presence"},
    // Swapped in both directions. `PluginRecordsTests` reads each into its field.
    {"GitPluginSource", "refName and sha for each other"},
    {"GitPluginSource", "refName and path for each other"},
    {"GitPluginSource", "sha and path for each other"},
    // A word that is not known is kept as well. `AccountRecordsTests` compares what is read with the constants.
    {"Known", "headline misspelt"},
    {"Known", "announcement misspelt"},
    {"Known", "announcement for the word before"},
};

/// Whether the changed table means the same.
bool isEquivalent(const tests::Catalog& catalog, const tests::TableMutant& mutant) {
  if (unseenByReading.contains({mutant.type, mutant.what})) return true;
  if (!catalog.contains(mutant.type)) return false;
  const auto& definition = catalog.at(mutant.type);
  if (!mutant.writtenCase.empty()) return saysItsOwnType(catalog, definition, mutant.writtenCase);
  for (const auto& field : definition.fields) {
    if (field.keys.front() == mutant.emptyField) return isNeverEmpty(field);
  }
  return false;
}

bool isNoticedBy(const tests::Catalog& catalog, const std::string& name) {
  try {
    return !tests::check(catalog, catalog.at(name), *tests::registry().find(name), {1, std::nullopt}).empty();
  } catch (const std::exception&) {
    return true;
  }
}

bool isNoticed(const tests::Catalog& catalog, const std::string& type) {
  for (const auto& name : definitionsOf(catalog, type)) {
    if (isNoticedBy(catalog, name)) return true;
  }
  return false;
}

}  // namespace

int main() {
  const tests::Catalog catalog = tests::readCatalog(ORMEL_EXPECTATIONS_FOLDER);
  tests::collectTables();
  for (const auto& [name, type] : tests::registry().all()) {
    for (const auto& finding : tests::check(catalog, catalog.at(name), type)) {
      std::printf("not met to begin with: %s: %s\n", finding.where.c_str(), finding.what.c_str());
      return 1;
    }
  }
  const auto mutants = tests::tableMutants();
  std::size_t tried = 0, survivors = 0;
  for (const auto& mutant : mutants) {
    if (isEquivalent(catalog, mutant)) continue;
    ++tried;
    mutant.activate();
    if (!isNoticed(catalog, mutant.type)) {
      ++survivors;
      std::printf("not noticed: %s: %s\n", mutant.type.c_str(), mutant.what.c_str());
    }
    tests::deactivateMutant();
  }
  std::printf("%zu changes, %zu not noticed\n", tried, survivors);
  return survivors == 0 && tried > 0 ? 0 : 1;
}
