#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "Fastest.h"
#include "ItemSamples.h"
#include "ItemYardstick.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Text/SharedText.h"
#include "Walk.h"

namespace {

using ormel::JSONValue;
using ormel::SharedText;
using ormel::ThreadItem;

void decodeItem(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  for (auto _ : state) benchmark::DoNotOptimize(ormel::decode<ThreadItem>(value));
}

void walkItem(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  for (auto _ : state) benchmark::DoNotOptimize(ormel::benchmarks::walk(value));
}

void walkItemAndCopyTexts(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  std::vector<std::string> texts;
  for (auto _ : state) benchmark::DoNotOptimize(ormel::benchmarks::copyTexts(value, texts));
}

void decodeItemByNlohmann(benchmark::State& state, const std::string& text) {
  const auto value = nlohmann::json::parse(text);
  for (auto _ : state) benchmark::DoNotOptimize(value.get<ormel::benchmarks::yardstick::Item>());
}

bool registerItems() {
  for (const auto& [name, text] : ormel::benchmarks::itemSamples()) {
    const auto add = [kind = std::string(name), &sample = text](const std::string& what, auto* function) {
      ormel::benchmarks::reportFastest(benchmark::RegisterBenchmark((what + '/' + kind).c_str(), function, sample));
    };
    add("decodeItem", decodeItem);
    add("walkItem", walkItem);
    add("walkItemAndCopyTexts", walkItemAndCopyTexts);
    add("decodeItemByNlohmann", decodeItemByNlohmann);
  }
  return true;
}
[[maybe_unused]] const bool areItemsRegistered = registerItems();

/// Bytes of memory that the process uses now.
double usedMemory() {
  std::ifstream pages("/proc/self/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  pages >> total >> resident;
  return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

// A text that streams in pieces of 4 KB, while a slow consumer holds every state of it. `memory` is in multiples of the
// final text, with the snapshots themselves taken out.
void buildSharedText(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const std::string delta(4000, 'd');
  double most = 0;
  std::vector<SharedText> snapshots;
  snapshots.resize(size / delta.size());
  for (auto _ : state) {
    for (auto& snapshot : snapshots) snapshot = SharedText();
    const double before = usedMemory();
    SharedText text;
    for (auto& snapshot : snapshots) {
      text.append(delta);
      snapshot = text;
    }
    most = std::max(most, (usedMemory() - before) / static_cast<double>(size));
  }
  state.counters["memory"] = most;
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(buildSharedText)->Arg(1'000'000)->Arg(10'000'000)->Arg(100'000'000)->Unit(benchmark::kMillisecond);

// The same text by a string that reserves all its memory first and keeps no state.
void buildString(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const std::string delta(4000, 'd');
  for (auto _ : state) {
    std::string text;
    text.reserve(size);
    for (std::size_t step = 0; step < size / delta.size(); ++step) text += delta;
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(buildString)->Arg(100'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
