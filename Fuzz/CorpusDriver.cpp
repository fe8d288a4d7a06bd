// Runs one fuzzer without clang's fuzzing engine: on each file of its corpus, and on random variations of these.
// Findings can be replayed by the seed that it prints.
// Usage: fuzz-replay FUZZER CORPUS VARIATIONS [SEED]
//        fuzz-replay --for-each-first-line FUZZER CORPUS VARIATIONS [SEED]
// The second form makes so many variations for each first line that there is, and leaves that line as it is.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#define ORMEL_FUZZER(name) extern "C" int name(const std::uint8_t* bytes, std::size_t size);
#include "Fuzzers.inc"
#undef ORMEL_FUZZER

namespace {

using Fuzzer = int (*)(const std::uint8_t* bytes, std::size_t size);

constexpr std::pair<std::string_view, Fuzzer> fuzzers[] = {
#define ORMEL_FUZZER(name) {#name, name},
#include "Fuzzers.inc"
#undef ORMEL_FUZZER
};

Fuzzer fuzzerNamed(std::string_view wanted) {
  for (const auto& [name, fuzzer] : fuzzers) {
    if (name == wanted) return fuzzer;
  }
  return nullptr;
}

void feed(Fuzzer fuzzer, const std::string& input) {
  // Exactly as many bytes as there are, so that a sanitizer sees a read behind them.
  const std::vector<std::uint8_t> bytes(input.begin(), input.end());
  fuzzer(bytes.data(), bytes.size());
}

std::vector<std::string> readCorpus(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> inputs;
  for (const auto& path : paths) {
    std::ifstream file(path, std::ios::binary);
    inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return inputs;
}

class Variations {
 public:
  explicit Variations(std::uint64_t seed) : random_(seed) {}

  std::string next(const std::vector<std::string>& corpus) {
    std::string input = corpus[below(corpus.size())];
    for (std::size_t count = 1 + below(4); count > 0; --count) change(input, corpus);
    return input;
  }

 private:
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }

  void change(std::string& input, const std::vector<std::string>& corpus) {
    static const std::string tokens = R"({}[]",:\0123456789.eE+-tfn )";
    const std::size_t place = below(input.size() + 1);
    const std::size_t length = below(std::min<std::size_t>(input.size() - place, 24) + 1);
    switch (below(5)) {
      case 0:
        input.erase(place, length);
        break;
      case 1:
        input.insert(place, 1, tokens[below(tokens.size())]);
        break;
      case 2:
        input.insert(place, 1, static_cast<char>(below(256)));
        break;
      case 3:
        input.insert(place, input.substr(place, length));
        break;
      default: {
        const std::string& other = corpus[below(corpus.size())];
        const std::size_t from = below(other.size() + 1);
        input.replace(place, length, other.substr(from, below(48)));
      }
    }
  }

  std::mt19937_64 random_;
};

using Inputs = std::vector<std::string>;

void feedVariations(Fuzzer fuzzer, const Inputs& corpus, const std::string& start, long count, Variations& variations) {
  for (; count > 0; --count) feed(fuzzer, start + variations.next(corpus));
}

/// Inputs by their first line with its line feed, and without it.
std::map<std::string, Inputs> byFirstLine(const Inputs& corpus) {
  std::map<std::string, Inputs> rests;
  for (const std::string& input : corpus) {
    const std::size_t rest = input.find('\n') + 1;
    rests[input.substr(0, rest)].push_back(input.substr(rest));
  }
  return rests;
}

int usage(const char* program) {
  std::fprintf(stderr, "Usage: %s [--for-each-first-line] FUZZER CORPUS VARIATIONS [SEED]\nThe fuzzers:", program);
  for (const auto& entry : fuzzers) std::fprintf(stderr, " %s", entry.first.data());
  std::fprintf(stderr, "\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  Inputs arguments(argv + 1, argv + argc);
  const bool forEachFirstLine = !arguments.empty() && arguments.front() == "--for-each-first-line";
  if (forEachFirstLine) arguments.erase(arguments.begin());
  const Fuzzer fuzzer = arguments.size() >= 3 ? fuzzerNamed(arguments[0]) : nullptr;
  if (!fuzzer) return usage(argv[0]);
  const Inputs corpus = readCorpus(arguments[1]);
  if (corpus.empty()) {
    std::fprintf(stderr, "The corpus %s is empty.\n", arguments[1].c_str());
    return 2;
  }
  for (const auto& input : corpus) feed(fuzzer, input);
  const long count = std::strtol(arguments[2].c_str(), nullptr, 10);
  const std::uint64_t seed =
      arguments.size() > 3 ? std::strtoull(arguments[3].c_str(), nullptr, 10) : std::random_device()();
  std::printf("%zu inputs; variations of seed %llu\n", corpus.size(), static_cast<unsigned long long>(seed));
  std::fflush(stdout);
  Variations variations(seed);
  if (!forEachFirstLine) {
    feedVariations(fuzzer, corpus, "", count, variations);
    return 0;
  }
  for (const auto& [line, rests] : byFirstLine(corpus)) {
    std::printf("%ld variations of %s", count, line.empty() ? "inputs of one line\n" : line.c_str());
    std::fflush(stdout);
    feedVariations(fuzzer, rests, line, count, variations);
  }
  return 0;
}
