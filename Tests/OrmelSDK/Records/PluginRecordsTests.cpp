#include "OrmelSDK/Records/PluginRecords.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Support/CodingChecks.h"

namespace {

using namespace ormel;

TEST(PluginSource, KeepsTheFieldsOfATypeThatItKnows) {
  struct Row {
    std::string_view text;
    PluginSource source;
    std::string_view written;
  };
  const Row rows[] = {
      {R"({"type":"local","path":"/p","extra":1})", PluginSource::local("/p"), R"({"type":"local","path":"/p"})"},
      {R"({"type":"git","url":"u","refName":"r","sha":"s","path":"p"})", PluginSource::git("u", "r", "s", "p"),
       R"({"type":"git","url":"u","refName":"r","sha":"s","path":"p"})"},
      {R"({"url":"u","sha":null,"type":"git"})", PluginSource::git("u"), R"({"type":"git","url":"u"})"},
      {R"({"type":"remote","path":3})", PluginSource::remote(), R"({"type":"remote"})"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(tests::decoded<PluginSource>(row.text), row.source) << row.text;
    tests::expectWritten(row.source, row.written);
  }
}

TEST(PluginSource, KeepsTheWholeObjectOfATypeThatItDoesNotKnow) {
  struct Row {
    std::string_view text;
    std::string type;
  };
  const Row rows[] = {
      {R"({"type":"archive","url":"u","parts":[1,{"x":null}]})", "archive"},
      {R"({"type":"Local","path":"/p"})", "Local"},
      {R"({"type":"unknown"})", "unknown"},
      {R"({"type":"","path":"/p"})", ""},
      {R"({"path":"/p"})", "unknown"},
      {R"({"type":null,"path":"/p"})", "unknown"},
      {R"({"type":{"kind":"local"},"path":"/p"})", "unknown"},
      {"{}", "unknown"},
  };
  for (const Row& row : rows) {
    const auto source = tests::decoded<PluginSource>(row.text);
    EXPECT_EQ(source, PluginSource::unknown(row.type, JSONValue::decode(row.text))) << row.text;
    tests::expectWritten(source, row.text);
  }
}

TEST(PluginSource, RequiresWhatItsTypeNeeds) {
  EXPECT_EQ(tests::failureOf<PluginSource>(R"({"type":"local"})"), "No value is associated with the key 'path'.");
  EXPECT_EQ(tests::failureOf<PluginSource>(R"({"type":"git","path":"p"})"),
            "No value is associated with the key 'url'.");
  EXPECT_EQ(tests::failureOf<PluginSource>(R"({"type":"git","url":"u","sha":1})"),
            "Expected String but found a number.");
  for (const std::string_view text : {"\"local\"", "[]", "null"}) {
    EXPECT_NE(tests::failureOf<PluginSource>(text), "decoded") << text;
  }
}

TEST(AppSummary, NeedsASignInIfTheServerSaysSoOrElseIfThereIsAPageForIt) {
  struct Row {
    std::string_view members;
    bool needsAuth;
  };
  const Row rows[] = {
      {"", false},
      {R"(,"installUrl":null)", false},
      {R"(,"installUrl":"u")", true},
      {R"(,"installUrl":"")", true},
      {R"(,"installUrl":"u","needsAuth":null)", true},
      {R"(,"installUrl":"u","needsAuth":false)", false},
      {R"(,"needsAuth":false)", false},
      {R"(,"needsAuth":true)", true},
  };
  for (const Row& row : rows) {
    const std::string text = R"({"id":"a","name":"n")" + std::string(row.members) + "}";
    EXPECT_EQ(tests::decoded<AppSummary>(text).needsAuth, row.needsAuth) << text;
  }
}

TEST(PluginAvailability, KnowsExactWordsOnly) {
  tests::checkWords<PluginAvailability>(
      {{PluginAvailability::available, "AVAILABLE"}, {PluginAvailability::disabledByAdmin, "DISABLED_BY_ADMIN"}});
  tests::checkTolerance<PluginAvailability>({{"ENABLED", PluginAvailability::available},
                                             {"available", PluginAvailability::unknown},
                                             {"Disabled_By_Admin", PluginAvailability::unknown},
                                             {" AVAILABLE", PluginAvailability::unknown},
                                             {"", PluginAvailability::unknown}});
}

TEST(PluginListResponse, FailsForOneBadPluginAndNamesThePathToIt) {
  const std::string plugin =
      R"({"id":"p","name":"n","source":{"type":"remote"},"installed":true,"enabled":true,"authPolicy":"ON_USE",)"
      R"("installPolicy":)";
  const std::string text =
      R"({"marketplaces":[{"name":"m","plugins":[)" + plugin + R"("AVAILABLE"},)" + plugin + R"("RECOMMENDED"}]}]})";
  const auto error = tests::errorIn<PluginListResponse>(JSONValue::decode(text));
  ASSERT_TRUE(error);
  EXPECT_STREQ(error->what(), "Cannot initialize PluginInstallPolicy from invalid String value RECOMMENDED");
  EXPECT_EQ(error->context().codingPath,
            (std::vector<std::string>{"marketplaces", "Index 0", "plugins", "Index 1", "installPolicy"}));
}

TEST(PluginSource, StreamsInOneReadableLine) {
  EXPECT_EQ(tests::printed(PluginSource::git("u", "main")),
            R"(PluginSource {"type":"git","url":"u","refName":"main"})");
  EXPECT_EQ(tests::printed(UnknownPluginSource{"unknown", JSONValue::decode(R"({"a":1})")}),
            R"(UnknownPluginSource {"a":1})");
}

}  // namespace
