#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "EventSamples.h"
#include "Fastest.h"
#include "OrmelSDK/JSONValue.h"
#include "OrmelSDK/ThreadEvent.h"

namespace {

using ormel::JSONValue;
using ormel::ThreadEvent;
using ormel::benchmarks::eventSamples;

void everyKind(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("kind")->DenseRange(0, static_cast<int>(eventSamples.size()) - 1);
  ormel::benchmarks::reportFastest(benchmark);
}

JSONValue sample(benchmark::State& state) {
  const auto& chosen = eventSamples[static_cast<std::size_t>(state.range(0))];
  state.SetLabel(std::string(chosen.name));
  return JSONValue::decode(chosen.text);
}

std::size_t walk(const JSONValue& value) {
  if (const auto text = value.stringValue()) return text->size();
  std::size_t sum = 1;
  if (const auto* object = value.objectValue()) {
    for (const auto& [key, member] : *object) sum += key.size() + walk(member);
  } else if (const auto* array = value.arrayValue()) {
    for (const auto& element : *array) sum += walk(element);
  }
  return sum;
}

// The yardstick of reading without keeping: every value is touched once.
void walkEventValue(benchmark::State& state) {
  const JSONValue value = sample(state);
  for (auto _ : state) benchmark::DoNotOptimize(walk(value));
}
BENCHMARK(walkEventValue)->Apply(everyKind);

void copyTexts(const JSONValue& value, std::vector<std::string>& texts) {
  if (const auto text = value.stringValue()) {
    texts.emplace_back(*text);
  } else if (const auto* object = value.objectValue()) {
    for (const auto& [key, member] : *object) copyTexts(member, texts);
  } else if (const auto* array = value.arrayValue()) {
    for (const auto& element : *array) copyTexts(element, texts);
  }
}

// The yardstick of keeping: every text becomes a string of its own, as an event's fields must.
void copyEventTexts(benchmark::State& state) {
  const JSONValue value = sample(state);
  std::vector<std::string> texts;
  for (auto _ : state) {
    texts.clear();
    copyTexts(value, texts);
    benchmark::DoNotOptimize(texts.data());
  }
}
BENCHMARK(copyEventTexts)->Apply(everyKind);

void decodeEvent(benchmark::State& state) {
  const JSONValue value = sample(state);
  for (auto _ : state) benchmark::DoNotOptimize(ormel::decode<ThreadEvent>(value));
}
BENCHMARK(decodeEvent)->Apply(everyKind);

void encodeEvent(benchmark::State& state) {
  const auto event = ormel::decode<ThreadEvent>(sample(state));
  for (auto _ : state) benchmark::DoNotOptimize(ormel::encode(event));
}
BENCHMARK(encodeEvent)->Apply(everyKind);

}  // namespace
