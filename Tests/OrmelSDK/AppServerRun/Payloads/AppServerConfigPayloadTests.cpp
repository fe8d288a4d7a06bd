#include "OrmelSDK/AppServerRun/Payloads/AppServerConfigPayload.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using detail::buildConfigObject;
using tests::json;
using Object = OrmelConfigValue::Object;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

JSONValue withRequiredFeatures(std::string_view text) {
  JSONObjectBuilder config;
  const JSONValue members = json(text);
  for (const auto& [key, value] : *members.objectValue()) config.set(key, value);
  return config.set("features", json(R"({"goals":true})")).build();
}

ThreadOptions overriding(Object overrides) {
  ThreadOptions options;
  options.configOverrides = std::move(overrides);
  return options;
}

OrmelOptions configured(Object config) {
  OrmelOptions options;
  options.config = std::move(config);
  return options;
}

JSONValue configOf(const ThreadOptions& options) { return buildConfigObject(options, OrmelOptions()); }

TEST(BuildConfigObject, HoldsTheRequiredFeaturesByItself) {
  EXPECT_EQ(configOf(ThreadOptions()), json(R"({"features":{"goals":true}})"));
  EXPECT_EQ(buildConfigObject(overriding({}), configured({})), json(R"({"features":{"goals":true}})"));
}

TEST(BuildConfigObject, ConvertsEveryKindOfOverride) {
  const Object overrides = {{"text", "t"},
                            {"integer", 7},
                            {"double", 2.5},
                            {"bool", false},
                            {"array", OrmelConfigValue::array({1, "a"})},
                            {"object", OrmelConfigValue::object({{"a", true}})}};
  const JSONValue expected =
      withRequiredFeatures(R"({"text":"t","integer":7,"double":2.5,"bool":false,"array":[1,"a"],"object":{"a":true}})");
  EXPECT_EQ(buildConfigObject(overriding(overrides), OrmelOptions()), expected);
  EXPECT_EQ(buildConfigObject(ThreadOptions(), configured(overrides)), expected);
}

TEST(BuildConfigObject, PutsTheThreadsOverridesAheadOfTheLibrarys) {
  const auto config = buildConfigObject(
      overriding({{"shared", "thread"}, {"own", 1}, {"deep", OrmelConfigValue::object({{"b", 2}})}}),
      configured({{"shared", "library"}, {"other", 2}, {"deep", OrmelConfigValue::object({{"a", 1}})}}));
  EXPECT_EQ(config, withRequiredFeatures(R"({"shared":"thread","own":1,"other":2,"deep":{"b":2}})"));
}

TEST(BuildConfigObject, LeavesTheBaseURLToTheCommandLine) {
  OrmelOptions options;
  options.baseUrl = "http://localhost";
  EXPECT_EQ(buildConfigObject(ThreadOptions(), options), withRequiredFeatures("{}"));
}

TEST(BuildConfigObject, DropsOverridesThatHaveNoJSONForm) {
  EXPECT_EQ(configOf(overriding({{"a", notANumber},
                                 {"b", OrmelConfigValue::array({1, infinity})},
                                 {"c", OrmelConfigValue::object({{"d", OrmelConfigValue::array({-infinity})}})},
                                 {"e", 1.5}})),
            withRequiredFeatures(R"({"e":1.5})"));
}

TEST(BuildConfigObject, KeepsTheLibrarysValueWhereTheThreadsHasNoJSONForm) {
  EXPECT_EQ(buildConfigObject(overriding({{"a", notANumber}}), configured({{"a", 1}})),
            withRequiredFeatures(R"({"a":1})"));
}

TEST(BuildConfigObject, SendsARetiredApprovalPolicyAsWhatItBecame) {
  EXPECT_EQ(configOf(overriding({{"approval_policy", "on-failure"}})),
            withRequiredFeatures(R"({"approval_policy":"on-request"})"));
  EXPECT_EQ(buildConfigObject(ThreadOptions(), configured({{"approval_policy", "on-failure"}})),
            withRequiredFeatures(R"({"approval_policy":"on-request"})"));
}

TEST(BuildConfigObject, KeepsEveryOtherApprovalPolicy) {
  for (const char* policy : {"never", "on-request", "untrusted", "granular", "sometimes", "On-Failure", ""}) {
    const JSONValue config = configOf(overriding({{"approval_policy", policy}}));
    EXPECT_EQ(*config.find("approval_policy"), JSONValue(policy));
  }
  const auto granular = OrmelConfigValue::object({{"granular", OrmelConfigValue::object({{"rules", true}})}});
  EXPECT_EQ(configOf(overriding({{"approval_policy", granular}})),
            withRequiredFeatures(R"({"approval_policy":{"granular":{"rules":true}}})"));
  EXPECT_EQ(configOf(overriding({{"approval_policy", 1}})), withRequiredFeatures(R"({"approval_policy":1})"));
}

TEST(BuildConfigObject, TakesTheApprovalPolicyOfTheOptionsNowhere) {
  ThreadOptions options;
  options.approvalPolicy = ApprovalMode::never;
  EXPECT_EQ(configOf(options), withRequiredFeatures("{}"));
}

TEST(BuildConfigObject, SendsTheModeOfWebSearch) {
  const std::pair<WebSearchMode, std::string_view> modes[] = {{WebSearchMode::disabled, R"({"web_search":"disabled"})"},
                                                              {WebSearchMode::cached, R"({"web_search":"cached"})"},
                                                              {WebSearchMode::live, R"({"web_search":"live"})"}};
  for (const auto& [mode, expected] : modes) {
    ThreadOptions options;
    options.webSearchMode = mode;
    EXPECT_EQ(configOf(options), withRequiredFeatures(expected));
    for (const bool enabled : {false, true}) {
      options.webSearchEnabled = enabled;
      EXPECT_EQ(configOf(options), withRequiredFeatures(expected)) << "the mode counts first";
    }
  }
}

TEST(BuildConfigObject, TakesTheSwitchOfWebSearchForLiveOrNone) {
  ThreadOptions options;
  options.webSearchEnabled = true;
  EXPECT_EQ(configOf(options), withRequiredFeatures(R"({"web_search":"live"})"));
  options.webSearchEnabled = false;
  EXPECT_EQ(configOf(options), withRequiredFeatures(R"({"web_search":"disabled"})"));
}

TEST(BuildConfigObject, PutsTheOptionsOfWebSearchAheadOfOverrides) {
  ThreadOptions options = overriding({{"web_search", "cached"}});
  EXPECT_EQ(configOf(options), withRequiredFeatures(R"({"web_search":"cached"})"));
  options.webSearchEnabled = false;
  EXPECT_EQ(configOf(options), withRequiredFeatures(R"({"web_search":"disabled"})"));
  options.webSearchMode = WebSearchMode::live;
  EXPECT_EQ(configOf(options), withRequiredFeatures(R"({"web_search":"live"})"));
}

TEST(BuildConfigObject, SendsEachOptionOfTheModel) {
  ThreadOptions summary;
  summary.modelReasoningSummary = ModelReasoningSummary::none;
  EXPECT_EQ(configOf(summary), withRequiredFeatures(R"({"model_reasoning_summary":"none"})"));
  ThreadOptions verbosity;
  verbosity.modelVerbosity = ModelVerbosity::medium;
  EXPECT_EQ(configOf(verbosity), withRequiredFeatures(R"({"model_verbosity":"medium"})"));
  ThreadOptions window;
  window.modelContextWindow = std::int64_t{200000};
  EXPECT_EQ(configOf(window), withRequiredFeatures(R"({"model_context_window":200000})"));
  ThreadOptions limit;
  limit.modelAutoCompactTokenLimit = std::int64_t{0};
  EXPECT_EQ(configOf(limit), withRequiredFeatures(R"({"model_auto_compact_token_limit":0})"));
}

TEST(BuildConfigObject, SendsEveryWordOfTheModelsOptions) {
  const std::pair<ModelReasoningSummary, std::string_view> summaries[] = {{ModelReasoningSummary::auto_, "auto"},
                                                                          {ModelReasoningSummary::concise, "concise"},
                                                                          {ModelReasoningSummary::detailed, "detailed"},
                                                                          {ModelReasoningSummary::none, "none"}};
  for (const auto& [summary, word] : summaries) {
    ThreadOptions options;
    options.modelReasoningSummary = summary;
    const JSONValue config = configOf(options);
    EXPECT_EQ(*config.find("model_reasoning_summary"), JSONValue(word));
  }
  const std::pair<ModelVerbosity, std::string_view> verbosities[] = {
      {ModelVerbosity::low, "low"}, {ModelVerbosity::medium, "medium"}, {ModelVerbosity::high, "high"}};
  for (const auto& [verbosity, word] : verbosities) {
    ThreadOptions options;
    options.modelVerbosity = verbosity;
    const JSONValue config = configOf(options);
    EXPECT_EQ(*config.find("model_verbosity"), JSONValue(word));
  }
}

TEST(BuildConfigObject, PutsTheOptionsOfTheModelAheadOfOverrides) {
  ThreadOptions options = overriding({{"model_reasoning_summary", "auto"},
                                      {"model_verbosity", "low"},
                                      {"model_context_window", 1},
                                      {"model_auto_compact_token_limit", 2}});
  EXPECT_EQ(configOf(options), withRequiredFeatures(R"({"model_reasoning_summary":"auto","model_verbosity":"low",
                                     "model_context_window":1,"model_auto_compact_token_limit":2})"));
  options.modelReasoningSummary = ModelReasoningSummary::detailed;
  options.modelVerbosity = ModelVerbosity::high;
  options.modelContextWindow = 10;
  options.modelAutoCompactTokenLimit = 20;
  EXPECT_EQ(configOf(options), withRequiredFeatures(R"({"model_reasoning_summary":"detailed","model_verbosity":"high",
                                     "model_context_window":10,"model_auto_compact_token_limit":20})"));
}

TEST(BuildConfigObject, KeepsFeaturesAndSwitchesTheRequiredOneOn) {
  EXPECT_EQ(configOf(overriding({{"features", OrmelConfigValue::object({{"x", 1}, {"goals", false}})}})),
            json(R"({"features":{"x":1,"goals":true}})"));
  EXPECT_EQ(configOf(overriding({{"features", "all"}})), json(R"({"features":{"goals":true}})"));
}

TEST(BuildConfigObject, ReplacesTheLibrarysFeaturesByTheThreads) {
  const auto config = buildConfigObject(overriding({{"features", OrmelConfigValue::object({{"b", true}})}}),
                                        configured({{"features", OrmelConfigValue::object({{"a", true}})}}));
  EXPECT_EQ(config, json(R"({"features":{"b":true,"goals":true}})"));
}

}  // namespace
