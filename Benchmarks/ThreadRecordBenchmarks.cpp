#include <benchmark/benchmark.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Fastest.h"
#include "ItemYardstick.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "ThreadRecordSamples.h"
#include "Walk.h"

// The same records as another library's macros define them. They do less than ours: no optional fields, one spelling
// of each key, and texts in place of enumerations.
namespace byMacro {

using ormel::benchmarks::yardstick::Item;

struct Turn {
  std::string id;
  std::string itemsView;
  std::string status;
  double startedAt = 0;
  double completedAt = 0;
  std::int64_t durationMs = 0;
  std::vector<Item> items;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Turn, id, itemsView, status, startedAt, completedAt, durationMs, items)

struct Status {
  std::string type;
  std::vector<std::string> activeFlags;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Status, type, activeFlags)

struct GitInfo {
  std::string sha;
  std::string branch;
  std::string originUrl;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(GitInfo, sha, branch, originUrl)

struct Thread {
  std::string id;
  std::string sessionId;
  std::string preview;
  bool ephemeral = false;
  std::string modelProvider;
  double createdAt = 0;
  double updatedAt = 0;
  Status status;
  std::string path;
  std::string cwd;
  std::string cliVersion;
  nlohmann::json source;
  GitInfo gitInfo;
  std::vector<Turn> turns;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Thread, id, sessionId, preview, ephemeral, modelProvider, createdAt,
                                                updatedAt, status, path, cwd, cliVersion, source, gitInfo, turns)

struct ReadResponse {
  Thread thread;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(ReadResponse, thread)

}  // namespace byMacro

namespace {

using ormel::JSONValue;

const std::string& reply() {
  constexpr std::size_t megabyte = 1'000'000;
  static const std::string text = ormel::benchmarks::threadReadReply(megabyte);
  return text;
}

void count(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(reply().size()));
}

void threadReadToRecords(benchmark::State& state) {
  const JSONValue value = JSONValue::decode(reply());
  for (auto _ : state) benchmark::DoNotOptimize(ormel::decode<ormel::ThreadReadResponse>(value));
  count(state);
}
BENCHMARK(threadReadToRecords)->Apply(ormel::benchmarks::reportFastest);

void threadReadByMacroRecords(benchmark::State& state) {
  const auto value = nlohmann::json::parse(reply());
  for (auto _ : state) benchmark::DoNotOptimize(value.get<byMacro::ReadResponse>());
  count(state);
}
BENCHMARK(threadReadByMacroRecords)->Apply(ormel::benchmarks::reportFastest);

void threadReadByWalking(benchmark::State& state) {
  const JSONValue value = JSONValue::decode(reply());
  for (auto _ : state) benchmark::DoNotOptimize(ormel::benchmarks::walk(value));
  count(state);
}
BENCHMARK(threadReadByWalking)->Apply(ormel::benchmarks::reportFastest);

void threadReadByCopyingTexts(benchmark::State& state) {
  const JSONValue value = JSONValue::decode(reply());
  for (auto _ : state) {
    std::vector<std::string> texts;
    benchmark::DoNotOptimize(ormel::benchmarks::copyTexts(value, texts));
  }
  count(state);
}
BENCHMARK(threadReadByCopyingTexts)->Apply(ormel::benchmarks::reportFastest);

void threadReadFromRecords(benchmark::State& state) {
  const auto response = ormel::decode<ormel::ThreadReadResponse>(JSONValue::decode(reply()));
  for (auto _ : state) benchmark::DoNotOptimize(ormel::encode(response));
  count(state);
}
BENCHMARK(threadReadFromRecords)->Apply(ormel::benchmarks::reportFastest);

}  // namespace
