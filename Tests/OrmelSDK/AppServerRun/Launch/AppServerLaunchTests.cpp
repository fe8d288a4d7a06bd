#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "OrmelSDK/AppServerRun/Launch/ProcessEnvironment.h"
#include "OrmelSDK/Base/OrmelProcessError.h"

namespace {

using namespace std::string_literals;
using ormel::JSONValue;
using ormel::OrmelConfigValue;
using ormel::OrmelOptions;
using ormel::OrmelProcessError;
using ormel::detail::buildAppServerArguments;
using ormel::detail::buildAppServerEnvironment;
using ormel::detail::configJSONEnablingRequiredSDKFeatures;
using ormel::detail::configValueToJSONValue;
using ormel::detail::flattenConfigOverridesForCLI;
using ormel::detail::prependPathDirectories;
using ormel::detail::quoteForTomlCLI;
using ormel::detail::toTomlValueForCLI;
using testing::ElementsAre;
using testing::IsEmpty;

using Object = OrmelConfigValue::Object;
using Environment = std::map<std::string, std::string>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

OrmelConfigValue object(Object members) { return OrmelConfigValue::object(std::move(members)); }
OrmelConfigValue array(OrmelConfigValue::Array elements) { return OrmelConfigValue::array(std::move(elements)); }

// The texts behind "--config", after a check that the rest of the list is as it should be.
std::vector<std::string> overridesOf(const OrmelOptions& options) {
  const auto arguments = buildAppServerArguments("/bin/ormel", options);
  EXPECT_GE(arguments.size(), 4u);
  EXPECT_THAT(std::vector(arguments.begin(), arguments.begin() + 4),
              ElementsAre("/bin/ormel", "app-server", "--listen", "stdio://"));
  std::vector<std::string> overrides;
  for (std::size_t index = 4; index + 1 < arguments.size(); index += 2) {
    EXPECT_EQ(arguments[index], "--config");
    overrides.push_back(arguments[index + 1]);
  }
  EXPECT_EQ(arguments.size(), 4 + 2 * overrides.size());
  return overrides;
}

std::vector<std::string> flattened(const OrmelConfigValue& value, const std::string& prefix = "") {
  std::vector<std::string> overrides;
  flattenConfigOverridesForCLI(value, prefix, overrides);
  return overrides;
}

std::string toml(const OrmelConfigValue& value) { return toTomlValueForCLI(value, "p"); }

template <typename Operation>
void expectInvalidOverride(const std::string& text, Operation operation) {
  try {
    operation();
    FAIL() << "no failure: " << text;
  } catch (const OrmelProcessError& error) {
    EXPECT_EQ(error.kind(), OrmelProcessError::Kind::invalidConfigOverride);
    EXPECT_EQ(error.what(), text);
  }
}

TEST(BuildAppServerArguments, SendsTheRequiredFeatureWithoutAnyOption) {
  EXPECT_THAT(buildAppServerArguments("ormel", OrmelOptions()),
              ElementsAre("ormel", "app-server", "--listen", "stdio://", "--config", "features.goals=true"));
}

TEST(BuildAppServerArguments, SendsTheRequiredFeatureWithAnEmptyConfig) {
  OrmelOptions options;
  options.config = Object();
  EXPECT_THAT(overridesOf(options), ElementsAre("features.goals=true"));
}

TEST(BuildAppServerArguments, ReplacesFeaturesThatAreNoObject) {
  for (const OrmelConfigValue& features : {OrmelConfigValue("all"), OrmelConfigValue(true), array({1})}) {
    OrmelOptions options;
    options.config = Object{{"features", features}};
    EXPECT_THAT(overridesOf(options), ElementsAre("features.goals=true"));
  }
}

TEST(BuildAppServerArguments, OverridesARequiredFeatureThatTheCallerSwitchedOff) {
  OrmelOptions options;
  options.config = Object{{"features", object({{"goals", false}, {"other", "x"}})}};
  EXPECT_THAT(overridesOf(options), ElementsAre("features.goals=true", "features.other=\"x\""));
  EXPECT_EQ(*options.config, (Object{{"features", object({{"goals", false}, {"other", "x"}})}}));
}

TEST(BuildAppServerArguments, PutsTheBaseURLBehindAllOtherOverrides) {
  OrmelOptions options;
  options.baseUrl = "https://example.invalid/v1";
  options.config = Object{{"zzz", 1}, {"velnor_base_url", "x"}};
  EXPECT_THAT(overridesOf(options), ElementsAre("features.goals=true", "velnor_base_url=\"x\"", "zzz=1",
                                                "velnor_base_url=\"https://example.invalid/v1\""));
}

TEST(BuildAppServerArguments, CountsAnEmptyBaseURLAsSet) {
  OrmelOptions options;
  options.baseUrl = "";
  EXPECT_THAT(overridesOf(options), ElementsAre("features.goals=true", "velnor_base_url=\"\""));
}

TEST(BuildAppServerArguments, NeverShowsTheAPIKey) {
  OrmelOptions options;
  options.apiKey = "secret";
  for (const auto& argument : buildAppServerArguments("ormel", options)) {
    EXPECT_EQ(argument.find("secret"), std::string::npos);
  }
}

TEST(BuildAppServerArguments, FailsForAnOverrideThatHasNoForm) {
  OrmelOptions options;
  options.config = Object{{"a", array({infinity})}};
  expectInvalidOverride("Ormel config override at a[0] must be a finite number",
                        [&] { buildAppServerArguments("ormel", options); });
}

TEST(ConfigEnablingRequiredSDKFeatures, KeepsTheOtherOverrides) {
  OrmelOptions options;
  EXPECT_EQ(options.configEnablingRequiredSDKFeatures(), (Object{{"features", object({{"goals", true}})}}));
  options.config = Object{{"a", 1}, {"features", object({{"b", 2}})}};
  EXPECT_EQ(options.configEnablingRequiredSDKFeatures(),
            (Object{{"a", 1}, {"features", object({{"b", 2}, {"goals", true}})}}));
}

TEST(ConfigJSONEnablingRequiredSDKFeatures, FollowsTheSameRule) {
  const JSONValue goals = JSONValue::object({{"goals", true}});
  using Config = std::map<std::string, JSONValue>;
  EXPECT_EQ(configJSONEnablingRequiredSDKFeatures({}), (Config{{"features", goals}}));
  EXPECT_EQ(configJSONEnablingRequiredSDKFeatures({{"a", 1}, {"features", "all"}}),
            (Config{{"a", 1}, {"features", goals}}));
  EXPECT_EQ(configJSONEnablingRequiredSDKFeatures({{"features", JSONValue()}}), (Config{{"features", goals}}));
  EXPECT_EQ(configJSONEnablingRequiredSDKFeatures(
                {{"features", JSONValue::object({{"goals", false}, {"b", JSONValue::array({1, 2})}})}}),
            (Config{{"features", JSONValue::object({{"goals", true}, {"b", JSONValue::array({1, 2})}})}}));
}

TEST(FlattenConfigOverrides, WritesNestedKeysAsADottedPathInOrder) {
  EXPECT_THAT(flattened(object({{"a", object({{"c", "x"}, {"b", 1}})}})), ElementsAre("a.b=1", "a.c=\"x\""));
  EXPECT_THAT(flattened(object({{"b", 1}, {"a", object({{"z", object({{"y", true}})}})}, {"B", 2}})),
              ElementsAre("B=2", "a.z.y=true", "b=1"));
}

TEST(FlattenConfigOverrides, SortsNonASCIIKeysBehindASCIIOnes) {
  EXPECT_THAT(flattened(object({{"\xC3\xA9", 1}, {"z", 2}})), ElementsAre("z=2", "\xC3\xA9=1"));
}

TEST(FlattenConfigOverrides, WritesAnEmptyObjectOnlyBelowTheTop) {
  EXPECT_THAT(flattened(object({{"a", object({})}})), ElementsAre("a={}"));
  EXPECT_THAT(flattened(object({})), IsEmpty());
  EXPECT_THAT(flattened(object({}), "p"), ElementsAre("p={}"));
}

TEST(FlattenConfigOverrides, WritesAValueThatIsNoObjectAtItsPrefix) {
  EXPECT_THAT(flattened(1, "p"), ElementsAre("p=1"));
  EXPECT_THAT(flattened(array({1, object({{"b c", true}})}), "a"), ElementsAre("a=[1, {\"b c\" = true}]"));
}

TEST(FlattenConfigOverrides, RefusesAValueThatIsNoObjectAtTheTop) {
  for (const OrmelConfigValue& value :
       {OrmelConfigValue("x"), OrmelConfigValue(1), OrmelConfigValue(notANumber), array({})}) {
    expectInvalidOverride("Ormel config overrides must be a plain object", [&] { flattened(value); });
  }
}

TEST(FlattenConfigOverrides, LeavesKeysOfThePathAsTheyAre) {
  EXPECT_THAT(flattened(object({{"a.b", 1}})), ElementsAre("a.b=1"));
  EXPECT_THAT(flattened(object({{"a b", object({{"\"=\n", 1}})}})), ElementsAre("a b.\"=\n=1"));
}

TEST(FlattenConfigOverrides, RefusesAnEmptyKeyAtAnyDepth) {
  constexpr auto text = "Ormel config override keys must be non-empty strings";
  expectInvalidOverride(text, [] { flattened(object({{"", 1}})); });
  expectInvalidOverride(text, [] { flattened(object({{"a", object({{"", object({})}})}})); });
  expectInvalidOverride(text, [] { flattened(object({{"a", array({1, object({{"", 1}})})}})); });
  expectInvalidOverride(text, [] { flattened(object({{"a", array({object({{"b", object({{"", 1}})}})})}})); });
}

TEST(FlattenConfigOverrides, NamesThePathOfANumberThatIsNotFinite) {
  expectInvalidOverride("Ormel config override at a must be a finite number",
                        [] { flattened(object({{"a", notANumber}})); });
  expectInvalidOverride("Ormel config override at a.b must be a finite number",
                        [] { flattened(object({{"a", object({{"b", -infinity}})}})); });
  expectInvalidOverride("Ormel config override at a[1][0].b c.d must be a finite number", [] {
    flattened(object({{"a", array({1, array({object({{"b c", object({{"d", infinity}})}})})})}}));
  });
}

TEST(FlattenConfigOverrides, StopsAtTheFirstFailureInTheOrderOfKeys) {
  std::vector<std::string> overrides;
  expectInvalidOverride("Ormel config override at b must be a finite number", [&] {
    flattenConfigOverridesForCLI(object({{"c", array({infinity})}, {"b", infinity}, {"a", 1}}), "", overrides);
  });
  EXPECT_THAT(overrides, ElementsAre("a=1"));
}

TEST(ToTomlValue, WritesScalars) {
  EXPECT_EQ(toml("x"), "\"x\"");
  EXPECT_EQ(toml(true), "true");
  EXPECT_EQ(toml(false), "false");
  EXPECT_EQ(toml(1), "1");
  EXPECT_EQ(toml(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(ToTomlValue, KeepsTheFractionOfAWholeDouble) {
  EXPECT_EQ(toml(1.0), "1.0");
  EXPECT_EQ(toml(-3.0), "-3.0");
  EXPECT_EQ(toml(0.0), "0.0");
  EXPECT_EQ(toml(-0.0), "-0.0");
  EXPECT_EQ(toml(100000.0), "100000.0");
  EXPECT_EQ(toml(9007199254740992.0), "9007199254740992.0");
}

TEST(ToTomlValue, WritesTheShortestTextOfADouble) {
  EXPECT_EQ(toml(0.1), "0.1");
  EXPECT_EQ(toml(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(toml(123456.789), "123456.789");
  EXPECT_EQ(toml(0.0001), "0.0001");
}

TEST(ToTomlValue, GivesVeryLargeAndVerySmallDoublesAnExponent) {
  EXPECT_EQ(toml(1e16), "1e+16");
  EXPECT_EQ(toml(-1.5e300), "-1.5e+300");
  EXPECT_EQ(toml(0.00001), "1e-05");
  EXPECT_EQ(toml(5e-324), "5e-324");
}

TEST(ToTomlValue, WritesDoublesThatReadBackAsTheSame) {
  std::mt19937_64 random(7);
  for (int count = 0; count < 20'000; ++count) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    const std::string text = toml(value);
    ASSERT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
    ASSERT_NE(text.find_first_of(".e"), std::string::npos) << text;
  }
}

TEST(ToTomlValue, WritesArraysAndInlineTables) {
  EXPECT_EQ(toml(array({})), "[]");
  EXPECT_EQ(toml(array({1, "x", array({2.0}), false})), "[1, \"x\", [2.0], false]");
  EXPECT_EQ(toml(object({})), "{}");
  EXPECT_EQ(toml(object({{"b", 1}, {"a", object({{"c", array({})}})}})), "{a = {c = []}, b = 1}");
}

TEST(ToTomlValue, QuotesOnlyTheKeysThatAreNotBare) {
  EXPECT_EQ(toml(object({{"aZ09_-", 1}})), "{aZ09_- = 1}");
  EXPECT_EQ(toml(object({{"a.b", 1}, {"c\"d", 2}, {"\xC3\xA9", 3}})),
            "{\"a.b\" = 1, \"c\\\"d\" = 2, \"\xC3\xA9\" = 3}");
}

TEST(ToTomlValue, WritesADeeplyNestedValue) {
  constexpr std::size_t depth = 1'000;
  OrmelConfigValue value = 1;
  for (std::size_t level = 0; level < depth; ++level) value = array({value});
  std::string expected(depth, '[');
  expected += '1';
  expected.append(depth, ']');
  EXPECT_EQ(toml(value), expected);
}

TEST(QuoteForToml, EscapesControlCharactersQuotesAndBackslashes) {
  EXPECT_EQ(quoteForTomlCLI(""), "\"\"");
  EXPECT_EQ(quoteForTomlCLI("a\nb"), "\"a\\nb\"");
  EXPECT_EQ(quoteForTomlCLI("a\"b\\c"), "\"a\\\"b\\\\c\"");
  EXPECT_EQ(quoteForTomlCLI("\x01\t\0"s), "\"\\u0001\\t\\u0000\"");
}

TEST(QuoteForToml, LeavesSlashesAndNonASCIITextAsTheyAre) {
  EXPECT_EQ(quoteForTomlCLI("a/b"), "\"a/b\"");
  EXPECT_EQ(quoteForTomlCLI("a\\/b"), "\"a\\\\/b\"");
  EXPECT_EQ(quoteForTomlCLI("caf\xC3\xA9"), "\"caf\xC3\xA9\"");
}

TEST(QuoteForToml, EscapesOnlyDoubleQuotesWhenTheWriterFails) {
  const auto failing = [](std::string_view) -> std::string { throw std::length_error("too large"); };
  EXPECT_EQ(quoteForTomlCLI("a\"b\\c\n", failing), "\"a\\\\\"b\\c\n\"");
  const auto tooShort = [](std::string_view) { return std::string("]"); };
  EXPECT_EQ(quoteForTomlCLI("x", tooShort), "\"x\"");
}

TEST(ConfigValueToJSON, ConvertsEveryCase) {
  EXPECT_EQ(configValueToJSONValue("x"), JSONValue("x"));
  EXPECT_EQ(configValueToJSONValue(7), JSONValue(7));
  EXPECT_EQ(configValueToJSONValue(std::int64_t{9007199254740993}), JSONValue(9007199254740992.0));
  EXPECT_EQ(configValueToJSONValue(1.5), JSONValue(1.5));
  EXPECT_EQ(configValueToJSONValue(true), JSONValue(true));
  EXPECT_EQ(configValueToJSONValue(array({1, array({})})), JSONValue::array({1, JSONValue::array()}));
  EXPECT_EQ(configValueToJSONValue(object({{"a", object({{"b", false}})}, {"", 2}})),
            JSONValue::object({{"a", JSONValue::object({{"b", false}})}, {"", 2}}));
}

TEST(ConfigValueToJSON, DoesNotCheckADouble) {
  EXPECT_EQ(configValueToJSONValue(infinity), JSONValue(infinity));
  EXPECT_TRUE(std::isnan(configValueToJSONValue(notANumber).numberValue().value_or(0)));
}

TEST(BuildAppServerEnvironment, InheritsThisProcessesWithoutOneOfItsOwn) {
  ASSERT_EQ(::setenv("ORMEL_TEST_INHERITED", "yes", 1), 0);
  const auto environment = buildAppServerEnvironment(OrmelOptions(), {});
  EXPECT_EQ(environment.at("ORMEL_TEST_INHERITED"), "yes");
  EXPECT_EQ(environment.at("PATH"), ormel::detail::ProcessEnvironment::current().at("PATH"));
  EXPECT_EQ(environment.at("ORMEL_INTERNAL_ORIGINATOR_OVERRIDE"), "ormel_sdk_ts");
  ASSERT_EQ(::unsetenv("ORMEL_TEST_INHERITED"), 0);
}

TEST(BuildAppServerEnvironment, ReplacesTheInheritedOneByTheGiven) {
  OrmelOptions options;
  options.env = Environment{{"A", "1"}};
  EXPECT_EQ(buildAppServerEnvironment(options, {}),
            (Environment{{"A", "1"}, {"ORMEL_INTERNAL_ORIGINATOR_OVERRIDE", "ormel_sdk_ts"}}));
  options.env = Environment();
  EXPECT_EQ(buildAppServerEnvironment(options, {}),
            (Environment{{"ORMEL_INTERNAL_ORIGINATOR_OVERRIDE", "ormel_sdk_ts"}}));
}

TEST(BuildAppServerEnvironment, KeepsAnOriginatorThatIsPresentAlsoAnEmptyOne) {
  OrmelOptions options;
  for (const auto* const originator : {"mine", ""}) {
    options.env = Environment{{"ORMEL_INTERNAL_ORIGINATOR_OVERRIDE", originator}};
    EXPECT_EQ(buildAppServerEnvironment(options, {}), *options.env);
  }
}

TEST(BuildAppServerEnvironment, SetsTheAPIKeyAlsoAnEmptyOne) {
  OrmelOptions options;
  options.env = Environment{{"ORMEL_API_KEY", "old"}};
  EXPECT_EQ(buildAppServerEnvironment(options, {}).at("ORMEL_API_KEY"), "old");
  for (const auto* const key : {"new", ""}) {
    options.apiKey = key;
    EXPECT_EQ(buildAppServerEnvironment(options, {}).at("ORMEL_API_KEY"), key);
  }
}

TEST(BuildAppServerEnvironment, SetsThePathOnlyForGivenDirectories) {
  OrmelOptions options;
  options.env = Environment();
  EXPECT_FALSE(buildAppServerEnvironment(options, {}).contains("PATH"));
  EXPECT_EQ(buildAppServerEnvironment(options, {"/x", "/y"}).at("PATH"), "/x:/y");
}

std::string pathAfter(const std::string& path, const std::vector<std::string>& directories) {
  Environment environment{{"PATH", path}};
  prependPathDirectories(directories, environment);
  return environment.at("PATH");
}

TEST(PrependPathDirectories, MovesTheGivenDirectoriesAheadOfTheOthers) {
  EXPECT_EQ(pathAfter("/a:/b::/a", {"/b"}), "/b:/a:/a");
  EXPECT_EQ(pathAfter("/a:/b:/c", {"/c", "/new"}), "/c:/new:/a:/b");
}

TEST(PrependPathDirectories, LeavesTheGivenDirectoriesAsTheyAre) {
  EXPECT_EQ(pathAfter("/a", {"/b", "", "/b"}), "/b::/b:/a");
}

TEST(PrependPathDirectories, MakesAPathWhereThereIsNone) {
  Environment environment;
  prependPathDirectories({"/b"}, environment);
  EXPECT_EQ(environment, (Environment{{"PATH", "/b"}}));
}

TEST(PrependPathDirectories, SurvivesAPathOfNonsense) {
  EXPECT_EQ(pathAfter("", {"/b"}), "/b");
  EXPECT_EQ(pathAfter(":::", {"/b"}), "/b");
  EXPECT_EQ(pathAfter(" :\n:\xFF", {"/b"}), "/b: :\n:\xFF");
  EXPECT_EQ(pathAfter("/a:/b", {}), "/a:/b");
  std::string manyColons(100'000, ':');
  manyColons += "/a";
  EXPECT_EQ(pathAfter(manyColons, {"/b"}), "/b:/a");
}

}  // namespace
