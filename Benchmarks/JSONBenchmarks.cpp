#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "Fastest.h"
#include "JSONSamples.h"
#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONEncoding.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "SimdjsonWalk.h"

namespace {

using ormel::JSONValue;

std::string sample(std::int64_t which) {
  constexpr std::size_t megabyte = 1'000'000;
  switch (which) {
    case 0:
      return ormel::benchmarks::notificationLine();
    case 1:
      return ormel::benchmarks::nestedObjects(megabyte);
    default:
      return ormel::benchmarks::longString(megabyte);
  }
}

void samples(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("line=0,objects=1,string=2")->Arg(0)->Arg(1)->Arg(2);
  ormel::benchmarks::reportFastest(benchmark);
}

void count(benchmark::State& state, std::size_t size) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(size));
}

// The yardstick: simdjson's own document, parsed by a kept parser and walked once.
void decodeBySimdjsonParseAndWalk(benchmark::State& state) {
  const simdjson::padded_string text(sample(state.range(0)));
  simdjson::dom::parser parser;
  for (auto _ : state) benchmark::DoNotOptimize(ormel::benchmarks::walk(parser.parse(text).value_unsafe()));
  count(state, text.size());
}
BENCHMARK(decodeBySimdjsonParseAndWalk)->Apply(samples);

void decodeToJSONValue(benchmark::State& state) {
  const std::string text = sample(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(JSONValue::decode(text));
  count(state, text.size());
}
BENCHMARK(decodeToJSONValue)->Apply(samples);

// As the transports do: from a buffer with readable bytes behind the line.
void decodePaddedToJSONValue(benchmark::State& state) {
  std::string text = sample(state.range(0));
  const std::size_t size = text.size();
  text.append(ormel::detail::jsonPadding, ' ');
  for (auto _ : state) {
    benchmark::DoNotOptimize(ormel::detail::decodePaddedJSON(std::string_view(text).substr(0, size)));
  }
  count(state, size);
}
BENCHMARK(decodePaddedToJSONValue)->Apply(samples);

void encodeByRapidJSON(benchmark::State& state) {
  const std::string text = sample(state.range(0));
  rapidjson::Document document;
  document.Parse(text.c_str());
  rapidjson::StringBuffer output;
  for (auto _ : state) {
    output.Clear();
    rapidjson::Writer<rapidjson::StringBuffer> writer(output);
    document.Accept(writer);
    benchmark::DoNotOptimize(output.GetSize());
  }
  count(state, text.size());
}
BENCHMARK(encodeByRapidJSON)->Apply(samples);

void encodeJSONValue(benchmark::State& state) {
  const std::string text = sample(state.range(0));
  const JSONValue value = JSONValue::decode(text);
  ormel::detail::ByteBuffer output;
  for (auto _ : state) {
    output.clear();
    ormel::detail::encodeJSON(value, output);
    benchmark::DoNotOptimize(output.data());
  }
  count(state, text.size());
}
BENCHMARK(encodeJSONValue)->Apply(samples);

void copyJSONValue(benchmark::State& state) {
  const JSONValue value = JSONValue::decode(sample(state.range(0)));
  for (auto _ : state) {
    JSONValue copy = value;
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(copyJSONValue)->Apply(samples);

JSONValue objectOfNonASCIIKeys(std::int64_t count) {
  ormel::JSONObjectBuilder builder;
  for (std::int64_t number = 0; number < count; ++number) builder.set("\u00e9" + std::to_string(number), number);
  return builder.build();
}

// Keys outside ASCII are costly to compare; the time a member must not grow with the number of members.
void compareObjectsOfNonASCIIKeys(benchmark::State& state) {
  const JSONValue left = objectOfNonASCIIKeys(state.range(0));
  const JSONValue right = left.detached();
  for (auto _ : state) benchmark::DoNotOptimize(left == right);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(compareObjectsOfNonASCIIKeys)->Arg(1'000)->Arg(1'000'000);

}  // namespace
