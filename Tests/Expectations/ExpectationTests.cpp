#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "Expectations/Checks.h"

namespace {

using namespace ormel;

tests::Catalog readCatalog() {
  tests::Catalog catalog;
  for (const auto& file : std::filesystem::directory_iterator(ORMEL_EXPECTATIONS_FOLDER)) {
    if (file.path().extension() == ".txt") tests::readDefinitions(file.path(), catalog);
  }
  tests::checkReferences(catalog);
  return catalog;
}

const tests::Catalog& catalog() {
  static const tests::Catalog all = readCatalog();
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

INSTANTIATE_TEST_SUITE_P(Of, Expectations, testing::Values("Input", "Items", "Handlers", "Records", "Events"),
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
