#include <benchmark/benchmark.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "CatalogueRecordSamples.h"
#include "Fastest.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PluginRecords.h"

// The same records as another library's macros define them. They do less than ours: no optional fields, no variants,
// and texts in place of enumerations.
namespace catalogueByMacro {

struct Effort {
  std::string reasoningEffort;
  std::string description;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Effort, reasoningEffort, description)

struct Tier {
  std::string id;
  std::string name;
  std::string description;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Tier, id, name, description)

struct Model {
  std::string id;
  std::string model;
  std::string upgrade;
  std::string displayName;
  std::string description;
  std::string modelSpecialty;
  bool hidden = false;
  std::vector<Effort> supportedReasoningEfforts;
  std::string defaultReasoningEffort;
  std::vector<std::string> inputModalities;
  bool supportsPersonality = false;
  std::string multiAgentVersion;
  std::vector<std::string> additionalSpeedTiers;
  std::vector<Tier> serviceTiers;
  std::string defaultServiceTier;
  bool isDefault = false;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Model, id, model, upgrade, displayName, description, modelSpecialty,
                                                hidden, supportedReasoningEfforts, defaultReasoningEffort,
                                                inputModalities, supportsPersonality, multiAgentVersion,
                                                additionalSpeedTiers, serviceTiers, defaultServiceTier, isDefault)

struct ModelList {
  std::vector<Model> data;
  std::string nextCursor;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(ModelList, data, nextCursor)

struct Source {
  std::string type;
  std::string path;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Source, type, path)

struct Interface {
  std::string displayName;
  std::string shortDescription;
  std::string longDescription;
  std::string developerName;
  std::string category;
  std::vector<std::string> capabilities;
  std::string websiteUrl;
  std::vector<std::string> defaultPrompt;
  std::string brandColor;
  std::vector<std::string> screenshots;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Interface, displayName, shortDescription, longDescription,
                                                developerName, category, capabilities, websiteUrl, defaultPrompt,
                                                brandColor, screenshots)

struct Plugin {
  std::string id;
  std::string version;
  std::string localVersion;
  std::string name;
  Source source;
  bool installed = false;
  std::int64_t installedAt = 0;
  bool enabled = false;
  std::string installPolicy;
  std::string authPolicy;
  std::string availability;
  Interface interface;
  std::vector<std::string> keywords;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Plugin, id, version, localVersion, name, source, installed, installedAt,
                                                enabled, installPolicy, authPolicy, availability, interface, keywords)

struct Marketplace {
  std::string name;
  std::string path;
  std::vector<Plugin> plugins;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Marketplace, name, path, plugins)

struct PluginList {
  std::vector<Marketplace> marketplaces;
  std::vector<std::string> featuredPluginIds;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(PluginList, marketplaces, featuredPluginIds)

}  // namespace catalogueByMacro

namespace {

using ormel::JSONValue;

constexpr std::size_t megabyte = 1'000'000;

/// From the bytes of the reply to its record.
template <typename Record>
void decodeReply(benchmark::State& state, const std::string& reply) {
  for (auto _ : state) benchmark::DoNotOptimize(ormel::decode<Record>(JSONValue::decode(reply)));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(reply.size()));
}

template <typename Record>
void decodeReplyByNlohmann(benchmark::State& state, const std::string& reply) {
  for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(reply).get<Record>());
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(reply.size()));
}

void modelListToRecords(benchmark::State& state) {
  decodeReply<ormel::ModelListResponse>(state, ormel::benchmarks::modelListReply(megabyte));
}
BENCHMARK(modelListToRecords)->Apply(ormel::benchmarks::reportFastest);

void modelListByMacroRecords(benchmark::State& state) {
  decodeReplyByNlohmann<catalogueByMacro::ModelList>(state, ormel::benchmarks::modelListReply(megabyte));
}
BENCHMARK(modelListByMacroRecords)->Apply(ormel::benchmarks::reportFastest);

void pluginListToRecords(benchmark::State& state) {
  decodeReply<ormel::PluginListResponse>(state, ormel::benchmarks::pluginListReply(megabyte));
}
BENCHMARK(pluginListToRecords)->Apply(ormel::benchmarks::reportFastest);

void pluginListByMacroRecords(benchmark::State& state) {
  decodeReplyByNlohmann<catalogueByMacro::PluginList>(state, ormel::benchmarks::pluginListReply(megabyte));
}
BENCHMARK(pluginListByMacroRecords)->Apply(ormel::benchmarks::reportFastest);

}  // namespace
