#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "EventSamples.h"
#include "EventYardstick.h"
#include "Fastest.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "Walk.h"

namespace {

using ormel::JSONValue;
using ormel::ThreadEvent;

void walkEvent(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  for (auto _ : state) benchmark::DoNotOptimize(ormel::benchmarks::walk(value));
}

void walkEventAndCopyTexts(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  std::vector<std::string> texts;
  for (auto _ : state) benchmark::DoNotOptimize(ormel::benchmarks::copyTexts(value, texts));
}

void decodeEventByNlohmann(benchmark::State& state, const std::string& text) {
  const auto value = nlohmann::json::parse(text);
  for (auto _ : state) benchmark::DoNotOptimize(value.get<ormel::benchmarks::yardstick::Event>());
}

void decodeEvent(benchmark::State& state, const std::string& text) {
  const JSONValue value = JSONValue::decode(text);
  for (auto _ : state) benchmark::DoNotOptimize(ormel::decode<ThreadEvent>(value));
}

void encodeEvent(benchmark::State& state, const std::string& text) {
  const auto event = ormel::decode<ThreadEvent>(JSONValue::decode(text));
  for (auto _ : state) benchmark::DoNotOptimize(ormel::encode(event));
}

bool registerEvents() {
  for (const auto& [name, text] : ormel::benchmarks::eventSamples) {
    const auto add = [kind = std::string(name), sample = std::string(text)](const std::string& what, auto* function) {
      ormel::benchmarks::reportFastest(benchmark::RegisterBenchmark((what + '/' + kind).c_str(), function, sample));
    };
    add("decodeEvent", decodeEvent);
    add("walkEvent", walkEvent);
    add("walkEventAndCopyTexts", walkEventAndCopyTexts);
    add("decodeEventByNlohmann", decodeEventByNlohmann);
    add("encodeEvent", encodeEvent);
  }
  return true;
}
[[maybe_unused]] const bool areEventsRegistered = registerEvents();

}  // namespace
