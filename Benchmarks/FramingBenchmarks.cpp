#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Fastest.h"
#include "JSONSamples.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerJSONLineBuffer.h"
#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace {

using ormel::detail::AppServerJSONLineBuffer;

constexpr std::size_t pipeRead = 65'536;

// Notification lines, cut as a pipe's reader gets them.
const std::vector<std::string>& streamOfLines() {
  static const std::vector<std::string> pieces = [] {
    std::string stream;
    while (stream.size() < 16 * pipeRead) stream += ormel::benchmarks::notificationLine() + '\n';
    std::vector<std::string> cut;
    for (std::size_t at = 0; at < stream.size(); at += pipeRead) cut.push_back(stream.substr(at, pipeRead));
    return cut;
  }();
  return pieces;
}

void countLines(benchmark::State& state) {
  std::size_t bytes = 0;
  std::size_t lines = 0;
  for (const auto& piece : streamOfLines()) {
    bytes += piece.size();
    lines += static_cast<std::size_t>(std::count(piece.begin(), piece.end(), '\n'));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(lines));
}

// Looks for line feeds and does nothing else: no carriage return, no UTF-8.
class BareSplit {
 public:
  template <typename OnLine>
  void append(std::string_view bytes, OnLine&& onLine) {
    while (const void* found = std::memchr(bytes.data(), '\n', bytes.size())) {
      const auto size = static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data());
      if (partial_.empty()) {
        onLine(bytes.substr(0, size));
      } else {
        partial_.append(bytes.substr(0, size));
        onLine(partial_.view());
        partial_.clear();
      }
      bytes.remove_prefix(size + 1);
    }
    partial_.append(bytes);
  }

 private:
  ormel::detail::ByteBuffer partial_;
};

template <typename OnLine>
void split(BareSplit& splitter, std::string_view bytes, OnLine onLine) {
  splitter.append(bytes, onLine);
}

template <typename OnLine>
void split(AppServerJSONLineBuffer& buffer, std::string_view bytes, OnLine onLine) {
  buffer.append(bytes);
  while (const auto line = buffer.next()) onLine(*line);
}

template <typename Splitter>
std::vector<std::string> texts(Splitter& splitter, std::string_view bytes) {
  std::vector<std::string> lines;
  split(splitter, bytes, [&lines](std::string_view line) { lines.emplace_back(line); });
  return lines;
}

template <typename Splitter>
void splitIntoTexts(benchmark::State& state) {
  Splitter splitter;
  for (auto _ : state) {
    for (const auto& piece : streamOfLines()) benchmark::DoNotOptimize(texts(splitter, piece));
  }
  countLines(state);
}
BENCHMARK(splitIntoTexts<BareSplit>)->Apply(ormel::benchmarks::reportFastest);
BENCHMARK(splitIntoTexts<AppServerJSONLineBuffer>)->Apply(ormel::benchmarks::reportFastest);

template <typename Splitter>
void splitIntoViews(benchmark::State& state) {
  Splitter splitter;
  for (auto _ : state) {
    for (const auto& piece : streamOfLines()) {
      split(splitter, piece, [](std::string_view line) { benchmark::DoNotOptimize(line); });
    }
  }
  countLines(state);
}
BENCHMARK(splitIntoViews<BareSplit>)->Apply(ormel::benchmarks::reportFastest);
BENCHMARK(splitIntoViews<AppServerJSONLineBuffer>)->Apply(ormel::benchmarks::reportFastest);

void splitAndDecodeTexts(benchmark::State& state) {
  AppServerJSONLineBuffer buffer;
  for (auto _ : state) {
    for (const auto& piece : streamOfLines()) {
      for (const auto& line : texts(buffer, piece)) benchmark::DoNotOptimize(ormel::JSONValue::decode(line));
    }
  }
  countLines(state);
}
BENCHMARK(splitAndDecodeTexts)->Apply(ormel::benchmarks::reportFastest);

void splitAndDecodeInPlace(benchmark::State& state) {
  AppServerJSONLineBuffer buffer;
  for (auto _ : state) {
    for (const auto& piece : streamOfLines()) {
      split(buffer, piece,
            [](std::string_view line) { benchmark::DoNotOptimize(ormel::detail::decodePaddedJSON(line)); });
    }
  }
  countLines(state);
}
BENCHMARK(splitAndDecodeInPlace)->Apply(ormel::benchmarks::reportFastest);

// One line in pieces of 4 KB. Beyond some 30 MB each byte also pays for fresh memory pages, with any splitter.
template <typename Splitter>
void assembleOneLine(benchmark::State& state) {
  const std::string piece(4096, 'x');
  const auto pieces = static_cast<std::size_t>(state.range(0)) * 1'000'000 / piece.size();
  for (auto _ : state) {
    Splitter splitter;
    std::size_t size = 0;
    const auto measure = [&size](std::string_view line) { size = line.size(); };
    for (std::size_t count = 0; count < pieces; ++count) split(splitter, piece, measure);
    split(splitter, "\n", measure);
    benchmark::DoNotOptimize(size);
  }
  const std::size_t lineSize = pieces * piece.size();
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(lineSize));
}

void lineSizes(benchmark::internal::Benchmark* benchmark) {
  // All so large that the allocator gives their memory back to the system each time: a smaller line is spared that.
  benchmark->ArgName("megabytes")->Arg(50)->Arg(100)->Arg(200);
  ormel::benchmarks::reportFastest(benchmark);
}
BENCHMARK(assembleOneLine<BareSplit>)->Apply(lineSizes);
BENCHMARK(assembleOneLine<AppServerJSONLineBuffer>)->Apply(lineSizes);

}  // namespace
