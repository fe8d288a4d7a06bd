#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "Expectations/Checks.h"
#include "Expectations/Mutants.h"

namespace {

using namespace ormel;

const tests::Catalog& catalog() {
  static const tests::Catalog all = tests::readCatalog(ORMEL_EXPECTATIONS_FOLDER);
  return all;
}

class Expectations : public testing::TestWithParam<std::string> {};

TEST_P(Expectations, AreMet) {
  int checked = 0;
  for (const auto& [name, definition] : catalog()) {
    const auto* type = tests::registry().find(name);
    if (definition.file != GetParam() || !type) continue;
    ++checked;
    for (const auto& finding : tests::check(catalog(), definition, *type)) {
      ADD_FAILURE() << finding.where << ": " << finding.what;
    }
  }
  EXPECT_GT(checked, 0);
}

/// The definitions through which a change of one shows: itself, or the variants with its fields as a case.
std::vector<std::string> seenThrough(const tests::Definition& definition) {
  if (definition.kind != tests::Definition::Kind::fields) return {definition.name};
  std::vector<std::string> variants;
  for (const auto& [name, other] : catalog()) {
    for (const auto& variantCase : other.cases) {
      if (variantCase.fields == definition.name) variants.push_back(name);
    }
  }
  return variants;
}

bool isNoticed(const tests::Catalog& changed, const tests::Definition& definition, std::optional<std::size_t> field) {
  for (const auto& name : seenThrough(definition)) {
    const auto* type = tests::registry().find(name);
    try {
      if (type && !tests::check(changed, changed.at(name), *type, {1, field}).empty()) return true;
    } catch (const std::exception&) {
      return true;
    }
  }
  return false;
}

TEST_P(Expectations, ChangedInAnyPlaceAreNotMet) {
  tests::Catalog changed = catalog();
  for (const auto& [name, definition] : catalog()) {
    if (definition.file != GetParam()) continue;
    for (auto& mutant : tests::mutantsOf(definition)) {
      changed.at(name) = std::move(mutant.definition);
      EXPECT_TRUE(isNoticed(changed, definition, mutant.field)) << mutant.what;
    }
    changed.at(name) = definition;
  }
}

INSTANTIATE_TEST_SUITE_P(Of, Expectations,
                         testing::Values("Input", "Items", "Handlers", "Records", "Events", "AccountRecords",
                                         "CallWords", "CatalogueRecords", "ConfigRecords", "ModelRecords",
                                         "PluginRecords", "ThreadLists"),
                         [](const auto& family) { return family.param; });

TEST(ExpectationFiles, DefineEveryRegisteredTypeAndNoOther) {
  std::set<std::string> defined, registered;
  for (const auto& [name, definition] : catalog()) {
    if (definition.kind != tests::Definition::Kind::fields) defined.insert(name);
  }
  for (const auto& [name, type] : tests::registry().all()) registered.insert(name);
  EXPECT_EQ(defined, registered);
}

}  // namespace
