#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "OrmelSDK/Records/ConfigRecords.h"
#include "OrmelSDK/Records/ExperimentalFeatureRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"
#include "Support/TemporaryDirectory.h"
#include "ormel-simulator/Catalogue/CatalogueAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::HasSubstr;

JSONValue configOf(CatalogueAgent& agent) { return anyMember(agent.get("config/read"), "config"); }

std::string write(const std::string& keyPath, const std::string& value, const std::string& strategy = "replace",
                  const std::string& rest = "") {
  return R"({"keyPath":)" + JSONValue(keyPath).encode() + R"(,"value":)" + value + R"(,"mergeStrategy":")" + strategy +
         "\"" + rest + "}";
}

struct Write {
  const char* keyPath;
  const char* value;
  const char* strategy;
  /// The value that is then read under "garden".
  const char* garden;
};

TEST(CatalogueConfig, KeepsWhatIsWrittenAtItsKeyPath) {
  const testing::TemporaryDirectory state;
  const Write writes[] = {
      {"garden", R"({"beds":{"north":1,"south":2},"tools":["rake","hoe"]})", "replace",
       R"({"beds":{"north":1,"south":2},"tools":["rake","hoe"]})"},
      {"garden.beds.north", "3", "replace", R"({"beds":{"north":3,"south":2},"tools":["rake","hoe"]})"},
      {"garden", R"({"beds":{"west":{"rows":4}},"tools":["spade"]})", "upsert",
       R"({"beds":{"north":3,"south":2,"west":{"rows":4}},"tools":["spade"]})"},
      {"garden.beds", R"({"west":{"wet":true}})", "upsert",
       R"({"beds":{"north":3,"south":2,"west":{"rows":4,"wet":true}},"tools":["spade"]})"},
      {"garden.beds", R"({"east":5})", "replace", R"({"beds":{"east":5},"tools":["spade"]})"},
      {R"(garden."a.b".c)", R"("d")", "upsert", R"({"a.b":{"c":"d"},"beds":{"east":5},"tools":["spade"]})"},
      {"garden.beds.east", R"({"rows":1})", "upsert",
       R"({"a.b":{"c":"d"},"beds":{"east":{"rows":1}},"tools":["spade"]})"},
      {"garden.beds", "null", "replace", R"({"a.b":{"c":"d"},"tools":["spade"]})"},
      {"garden", R"({"tools":null})", "upsert", R"({"a.b":{"c":"d"}})"},
  };
  int version = 0;
  for (const Write& one : writes) {
    SCOPED_TRACE(one.keyPath);
    // Each in a process of its own, as one-shot calls are made.
    CatalogueAgent writer(state.path().string());
    const auto written =
        writer.read<ConfigBatchWriteResponse>("config/value/write", write(one.keyPath, one.value, one.strategy));
    EXPECT_EQ(written.status, "ok");
    EXPECT_EQ(written.version, std::to_string(++version));
    CatalogueAgent reader(state.path().string());
    EXPECT_EQ(anyMember(configOf(reader), "garden"), JSONValue::decode(one.garden));
    EXPECT_EQ(anyMember(configOf(writer), "garden"), JSONValue::decode(one.garden));
  }
}

TEST(CatalogueConfig, WritesAllEditsOrNone) {
  CatalogueAgent agent;
  const auto written = agent.read<ConfigBatchWriteResponse>(
      "config/batchWrite", R"({"edits":[{"keyPath":"a.b","value":1,"mergeStrategy":"replace"},
                                        {"keyPath":"a","value":{"c":2},"mergeStrategy":"upsert"}]})");
  EXPECT_EQ(written.version, "1");
  EXPECT_EQ(anyMember(configOf(agent), "a"), JSONValue::decode(R"({"b":1,"c":2})"));
  EXPECT_EQ(agent.fault("config/batchWrite", R"({"edits":[{"keyPath":"a.b","value":7,"mergeStrategy":"replace"},
                                                          {"keyPath":"model","value":8,"mergeStrategy":"replace"}]})"),
            "-32602 config key model must be a text");
  EXPECT_EQ(anyMember(configOf(agent), "a"), JSONValue::decode(R"({"b":1,"c":2})"));
  EXPECT_EQ(agent.fault("config/batchWrite", R"({"edits":[]})"), "-32602 edits must hold at least one edit");
}

TEST(CatalogueConfig, RefusesAWriteToAnotherVersionThanExpected) {
  CatalogueAgent agent;
  const auto expecting = [](const std::string& version) { return R"(,"expectedVersion":")" + version + "\""; };
  agent.get("config/value/write", write("a", "1", "replace", expecting("0")));
  EXPECT_EQ(agent.fault("config/value/write", write("a", "2", "replace", expecting("0"))),
            "-32600 the configuration has changed: expectedVersion is 0, but its version is 1; read it again");
  EXPECT_EQ(anyMember(configOf(agent), "a"), JSONValue(1));
  agent.get("config/value/write", write("a", "2", "replace", expecting("1")));
  EXPECT_EQ(anyMember(configOf(agent), "a"), JSONValue(2));
  EXPECT_THAT(agent.fault("config/batchWrite",
                          R"({"edits":[{"keyPath":"a","value":3,"mergeStrategy":"replace"}],"expectedVersion":"1"})"),
              HasSubstr("its version is 2"));
  // Enabling a skill is a change like any other.
  agent.get("skills/config/write", R"({"enabled":false,"name":"water-the-beds"})");
  EXPECT_THAT(agent.fault("config/value/write", write("a", "4", "replace", expecting("2"))),
              HasSubstr("its version is 3"));
}

TEST(CatalogueConfig, ShowsItsLayers) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  const auto written = agent.read<ConfigBatchWriteResponse>("config/value/write", write("model", "\"simulated-deep\""));
  EXPECT_TRUE(anyMember(agent.get("config/read", R"({"includeLayers":false})"), "layers").isNull());
  const JSONValue read = agent.get("config/read", R"({"includeLayers":true})");
  EXPECT_EQ(anyMember(anyMember(read, "config"), "model"), JSONValue("simulated-deep"));
  const JSONValue layers = anyMember(read, "layers");
  ASSERT_EQ(layers.arrayValue()->size(), 3U);
  const auto type = [&layers](std::size_t index) {
    return textMember(anyMember((*layers.arrayValue())[index], "name"), "type").value_or("");
  };
  EXPECT_EQ(type(0) + " " + type(1) + " " + type(2), "system user sessionFlags");
  const JSONValue& user = (*layers.arrayValue())[1];
  EXPECT_EQ(anyMember(user, "config"), JSONValue::object({{"model", "simulated-deep"}}));
  EXPECT_EQ(textMember(user, "version"), written.version);
  EXPECT_EQ(textMember(anyMember(user, "name"), "file"), written.filePath);
  EXPECT_TRUE(std::filesystem::exists(written.filePath.value_or("")));
  EXPECT_EQ(textMember(anyMember((*layers.arrayValue())[0], "config"), "model"), "simulated");
}

// The raw agent is started with "--config features.goals=true".
TEST(CatalogueConfig, IsOverriddenByTheCommandLine) {
  CatalogueAgent agent;
  const auto written = agent.read<ConfigBatchWriteResponse>("config/value/write", write("features.goals", "false"));
  EXPECT_EQ(written.status, "okOverridden");
  EXPECT_EQ(anyMember(*written.overriddenMetadata, "effectiveValue"), JSONValue(true));
  EXPECT_EQ(anyMember(anyMember(configOf(agent), "features"), "goals"), JSONValue(true));
}

TEST(CatalogueConfig, IsWrittenOnlyToItsOwnFile) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  const std::string edits = R"({"edits":[{"keyPath":"a","value":1,"mergeStrategy":"replace"}],"filePath":)";
  EXPECT_THAT(agent.fault("config/batchWrite", edits + R"("/etc/passwd"})"),
              HasSubstr("-32602 filePath must be the file of the user's configuration"));
  const auto layers = anyMember(agent.get("config/read", R"({"includeLayers":true})"), "layers");
  const JSONValue file = anyMember(anyMember((*layers.arrayValue())[1], "name"), "file");
  agent.get("config/batchWrite", edits + file.encode() + "}");
  EXPECT_EQ(anyMember(configOf(agent), "a"), JSONValue(1));
}

struct Wrong {
  const char* keyPath;
  const char* value;
  const char* refusal;
};

TEST(CatalogueConfig, RefusesWhatIsNone) {
  CatalogueAgent agent;
  const Wrong wrongs[] = {
      {"", "1", "-32602 keyPath must be a text that is not empty"},
      {"a..b", "1", "-32602 keyPath must be keys with dots between them, and not: a..b"},
      {".a", "1", "-32602 keyPath must be keys with dots between them, and not: .a"},
      {"a.", "1", "-32602 keyPath must be keys with dots between them, and not: a."},
      {"\"a", "1", "-32602 keyPath must be keys with dots between them, and not: \"a"},
      {"\"a\"b", "1", "-32602 keyPath must be keys with dots between them, and not: \"a\"b"},
      {"sandbox_mode", "\"open\"",
       "-32602 config key sandbox_mode must be one of: read-only, workspace-write, danger-full-access"},
      {"approval_policy", "\"x\"",
       "-32602 config key approval_policy must be one of: untrusted, on-request, on-failure, never"},
      {"web_search", "true", "-32602 config key web_search must be one of: disabled, cached, live"},
      {"plugins", "[]", "-32602 config key plugins must be an object"},
      {"plugins.x", "true", "-32602 config key plugins.x must be an object"},
      {"plugins.x.enabled", "1", "-32602 config key plugins.x.enabled must be true or false"},
      {"apps.x.approvals_reviewer", "\"me\"",
       "-32602 config key apps.x.approvals_reviewer must be one of: user, auto_review, guardian_subagent"},
      {"features.x", "\"on\"", "-32602 config key features.x must be true or false"},
      {"hooks.state.x.enabled", "0", "-32602 config key hooks.state.x.enabled must be true or false"},
      {"skills.config", R"([{"enabled":true}])",
       "-32602 config key skills.config must be a list of objects with enabled, and with name or path"},
  };
  for (const Wrong& wrong : wrongs) {
    EXPECT_EQ(agent.fault("config/value/write", write(wrong.keyPath, wrong.value)), wrong.refusal);
  }
  EXPECT_EQ(agent.fault("config/value/write", R"({"keyPath":"a","mergeStrategy":"replace"})"),
            "-32602 value must be given; null removes the key");
  EXPECT_EQ(agent.fault("config/value/write", R"({"keyPath":"a","value":1})"),
            "-32602 mergeStrategy must be one of: replace, upsert");
  EXPECT_EQ(agent.fault("config/value/write", R"({"keyPath":"a","value":1,"mergeStrategy":"blend"})"),
            "-32602 mergeStrategy must be one of: replace, upsert");
  agent.get("config/value/write", write("approval_policy", R"({"granular":{"rules":true}})"));
}

TEST(CatalogueConfig, IsThatOfTheRecords) {
  CatalogueAgent agent;
  agent.get("config/value/write", write("plugins.\"tides@harbour\"", R"({"enabled":false})"));
  agent.get("config/value/write", write("plugins.\"minutes@workspace\"", "{}"));
  agent.get("config/value/write", write("apps.almanac", R"({"enabled":false,"approvals_reviewer":"auto_review"})"));
  agent.get("skills/config/write", R"({"enabled":false,"path":"/ormel/skills/count-the-birds/skill.md"})");
  const auto config = agent.read<ConfigReadResponse>("config/read").config;
  EXPECT_FALSE(config.plugins->at("tides@harbour").enabled);
  EXPECT_TRUE(config.plugins->at("minutes@workspace").enabled);
  EXPECT_TRUE(config.apps->default_->enabled);
  EXPECT_FALSE(config.apps->apps.at("almanac").enabled);
  EXPECT_EQ(config.apps->apps.at("almanac").approvalsReviewer, ApprovalsReviewer::autoReview);
  ASSERT_EQ(config.skills->config.size(), 1U);
  EXPECT_EQ(config.skills->config[0].name, "count-the-birds");
  EXPECT_FALSE(config.skills->config[0].enabled);
}

TEST(CatalogueConfig, LosesNoChangeOfAnotherProcess) {
  const testing::TemporaryDirectory state;
  constexpr int writers = 4;
  constexpr int writesOfEach = 10;
  std::vector<std::thread> threads;
  for (int writer = 0; writer < writers; ++writer) {
    threads.emplace_back([&state, writer] {
      CatalogueAgent agent(state.path().string());
      for (int number = 0; number < writesOfEach; ++number) {
        agent.get("config/value/write", write("w" + std::to_string(writer) + ".n" + std::to_string(number), "true"));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  CatalogueAgent agent(state.path().string());
  const JSONValue config = configOf(agent);
  for (int writer = 0; writer < writers; ++writer) {
    const JSONValue written = anyMember(config, "w" + std::to_string(writer));
    EXPECT_EQ(written.objectValue()->size(), static_cast<std::size_t>(writesOfEach));
  }
  const auto last = agent.read<ConfigBatchWriteResponse>("config/value/write", write("end", "true"));
  EXPECT_EQ(last.version, std::to_string(writers * writesOfEach + 1));
}

TEST(CatalogueConfig, IsForgottenWithTheProcessWithoutAFolder) {
  CatalogueAgent first;
  first.get("config/value/write", write("a", "1"));
  EXPECT_EQ(anyMember(configOf(first), "a"), JSONValue(1));
  CatalogueAgent second;
  EXPECT_TRUE(anyMember(configOf(second), "a").isNull());
}

TEST(CatalogueConfig, NamesAFileThatIsDamagedAndLeavesIt) {
  const testing::TemporaryDirectory state;
  const std::string file = state / "catalogue";
  for (const char* content : {"{", "[]"}) {
    std::ofstream(file) << content;
    CatalogueAgent agent(state.path().string());
    for (const char* method : {"config/read", "account/read", "plugin/list", "remoteControl/enable"}) {
      EXPECT_THAT(agent.fault(method), HasSubstr("-32603 the file " + file + " is damaged: ")) << method;
    }
    // A conversation needs nothing of it.
    EXPECT_EQ(agent.say(agent.startThread(), "hello").empty(), false);
    EXPECT_FALSE(anyMember(agent.get("thread/list"), "data").isNull());
    EXPECT_EQ(std::filesystem::file_size(file), std::string_view(content).size());
  }
}

TEST(CatalogueConfig, IsReadFromNowhereByAConversation) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  agent.say(agent.startThread(), "hello");
  agent.get("config/read");
  EXPECT_EQ(agent.finish(), 0);
  EXPECT_FALSE(std::filesystem::exists(state / "catalogue"));
}

std::vector<HookMetadata> hooks(CatalogueAgent& agent) {
  return agent.read<HooksListResponse>("hooks/list", R"({"cwds":["/a"]})").data.at(0).hooks;
}

HookMetadata hook(CatalogueAgent& agent, const std::string& key) {
  for (HookMetadata& one : hooks(agent)) {
    if (one.key == key) return std::move(one);
  }
  throw std::runtime_error("no hook " + key);
}

TEST(CatalogueConfig, SwitchesHooks) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  EXPECT_TRUE(hook(agent, "user/second-look").enabled);
  EXPECT_EQ(hook(agent, "user/second-look").trustStatus, HookTrustStatus::untrusted);
  const auto choose = [&agent](const std::string& key, const std::string& choice) {
    agent.get("config/batchWrite", R"({"edits":[{"keyPath":"hooks.state","value":{")" + key + "\":" + choice +
                                       R"(},"mergeStrategy":"upsert"}],"reloadUserConfig":true})");
  };
  choose("user/second-look", R"({"enabled":false})");
  choose("user/close-the-gate", R"({"enabled":true})");
  choose("system/log-commands", R"({"enabled":false})");
  CatalogueAgent other(state.path().string());
  EXPECT_FALSE(hook(other, "user/second-look").enabled);
  EXPECT_TRUE(hook(other, "user/close-the-gate").enabled);
  const HookMetadata managed = hook(other, "system/log-commands");
  EXPECT_TRUE(managed.enabled && managed.isManaged);
  EXPECT_EQ(managed.trustStatus, HookTrustStatus::managed);
  const std::string hash = hook(other, "user/second-look").currentHash;
  choose("user/second-look", R"({"trusted_hash":")" + hash + R"("})");
  EXPECT_EQ(hook(other, "user/second-look").trustStatus, HookTrustStatus::trusted);
  EXPECT_FALSE(hook(other, "user/second-look").enabled);
  choose("user/second-look", R"({"trusted_hash":"old"})");
  EXPECT_EQ(hook(other, "user/second-look").trustStatus, HookTrustStatus::modified);
  EXPECT_EQ(agent.read<HooksListResponse>("hooks/list", R"({"cwds":["/a","/b"]})").data.at(1).cwd, "/b");
  EXPECT_EQ(agent.read<HooksListResponse>("hooks/list").data.at(0).cwd, std::filesystem::current_path().string());
}

std::vector<SkillSummary> skills(CatalogueAgent& agent) {
  return agent.read<SkillsListResponse>("skills/list", R"({"cwds":["/a"]})").data.at(0).skills;
}

bool isSkillEnabled(CatalogueAgent& agent, const std::string& name) {
  for (const SkillSummary& skill : skills(agent)) {
    if (skill.name == name) return skill.enabled;
  }
  throw std::runtime_error("no skill " + name);
}

TEST(CatalogueConfig, SwitchesSkills) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  EXPECT_TRUE(isSkillEnabled(agent, "water-the-beds"));
  const int request =
      agent.ask("skills/config/write", CatalogueAgent::paramsFrom(R"({"enabled":false,"name":"water-the-beds"})"));
  agent.await("skills/changed");
  agent.awaitAnswer(request);
  CatalogueAgent other(state.path().string());
  EXPECT_FALSE(isSkillEnabled(other, "water-the-beds"));
  EXPECT_TRUE(isSkillEnabled(other, "count-the-birds"));
  other.get("skills/config/write", R"({"enabled":true,"path":"/ormel/skills/water-the-beds/skill.md"})");
  EXPECT_TRUE(isSkillEnabled(agent, "water-the-beds"));
  EXPECT_EQ(agent.read<ConfigReadResponse>("config/read").config.skills->config.size(), 1U);
}

TEST(CatalogueConfig, SwitchesExperimentalFeatures) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  const auto isEnabled = [](CatalogueAgent& asked, const std::string& name) {
    for (const auto& feature : asked.read<ExperimentalFeatureListResponse>("experimentalFeature/list").data) {
      if (feature.name == name) return feature.enabled;
    }
    throw std::runtime_error("no feature " + name);
  };
  EXPECT_FALSE(isEnabled(agent, "night_shift"));
  EXPECT_TRUE(isEnabled(agent, "shared_sheds"));
  EXPECT_TRUE(isEnabled(agent, "goals"));
  const auto set = agent.read<ExperimentalFeatureEnablementSetResponse>(
      "experimentalFeature/enablement/set",
      R"({"enablement":{"night_shift":true,"shared_sheds":false,"goals":false}})");
  // The command line keeps goals enabled.
  const std::map<std::string, bool> expected = {{"goals", true}, {"night_shift", true}, {"shared_sheds", false}};
  EXPECT_EQ(set.enablement, expected);
  CatalogueAgent other(state.path().string());
  EXPECT_TRUE(isEnabled(other, "night_shift"));
  EXPECT_FALSE(isEnabled(other, "shared_sheds"));
}

}  // namespace
}  // namespace ormel::simulator
