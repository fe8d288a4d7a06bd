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
#include "OrmelSDK/JSONValue.h"
#include "OrmelSDK/RecordCoding.h"
#include "OrmelSDK/SharedText.h"
#include "OrmelSDK/ThreadItem.h"

namespace {

using ormel::JSONValue;
using ormel::SharedText;
using ormel::ThreadItem;

void decodeItem(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  for (auto _ : state) benchmark::DoNotOptimize(ormel::decode<ThreadItem>(value));
}

std::size_t walk(const JSONValue& value) {
  std::size_t sum = 1;
  if (const auto* object = value.objectValue()) {
    for (const auto& [key, member] : *object) sum += key.size() + walk(member);
  } else if (const auto* array = value.arrayValue()) {
    for (const auto& element : *array) sum += walk(element);
  } else if (const auto text = value.stringValue()) {
    sum += text->size();
  }
  return sum;
}

// The yardstick of effort: meeting every key and value once, and keeping nothing.
void walkItem(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  for (auto _ : state) benchmark::DoNotOptimize(walk(value));
}

std::size_t copyTexts(const JSONValue& value, std::vector<std::string>& texts) {
  if (const auto* object = value.objectValue()) {
    for (const auto& [key, member] : *object) copyTexts(member, texts);
  } else if (const auto* array = value.arrayValue()) {
    for (const auto& element : *array) copyTexts(element, texts);
  } else if (const auto text = value.stringValue()) {
    texts.emplace_back(*text);
  }
  return texts.size();
}

// What any record has to do at least: meeting every value once, and copying its text.
void walkItemAndCopyTexts(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  std::vector<std::string> texts;
  texts.reserve(64);
  for (auto _ : state) {
    texts.clear();
    benchmark::DoNotOptimize(copyTexts(value, texts));
  }
}

template <typename Record>
void decodeItemByNlohmann(benchmark::State& state, const std::string& text) {
  const auto value = nlohmann::json::parse(text);
  for (auto _ : state) benchmark::DoNotOptimize(value.get<Record>());
}

void registerFor(std::string_view kind, const std::string& text,
                 void (*yardstick)(benchmark::State&, const std::string&)) {
  const auto add = [&](const char* what, auto* function) {
    auto* added = benchmark::RegisterBenchmark((std::string(what) + '/' + std::string(kind)).c_str(), function, text);
    ormel::benchmarks::reportFastest(added);
  };
  add("decodeItem", decodeItem);
  add("walkItem", walkItem);
  add("walkItemAndCopyTexts", walkItemAndCopyTexts);
  add("decodeItemByNlohmann", yardstick);
}

template <typename... Records>
bool registerAll() {
  const auto samples = ormel::benchmarks::itemSamples();
  auto sample = samples.begin();
  const auto add = [&](auto* yardstick) {
    registerFor(sample->name, sample->text, yardstick);
    ++sample;
  };
  (add(decodeItemByNlohmann<Records>), ...);
  return sample == samples.end();
}

// In the order of the samples.
namespace yardstick = ormel::benchmarks::yardstick;
[[maybe_unused]] const bool isRegistered =
    registerAll<yardstick::userMessage, yardstick::hookPrompt, yardstick::agentMessage, yardstick::plan,
                yardstick::reasoning, yardstick::enteredReviewMode, yardstick::exitedReviewMode,
                yardstick::contextCompaction, yardstick::commandExecution, yardstick::fileChange,
                yardstick::mcpToolCall, yardstick::dynamicToolCall, yardstick::collabAgentToolCall,
                yardstick::webSearch, yardstick::imageView, yardstick::imageGeneration, yardstick::todoList,
                yardstick::sleep, yardstick::subAgentActivity, yardstick::error>();

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
