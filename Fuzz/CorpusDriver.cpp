// Runs one fuzzer without clang's fuzzing engine: on each file of its corpus, and on random variations of these.
// Findings can be replayed by the seed that it prints. Usage: fuzz-replay FUZZER CORPUS VARIATIONS [SEED]

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
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

}  // namespace

int main(int argc, char** argv) {
  const Fuzzer fuzzer = argc >= 4 ? fuzzerNamed(argv[1]) : nullptr;
  if (!fuzzer) {
    std::fprintf(stderr, "Usage: %s FUZZER CORPUS VARIATIONS [SEED]\nThe fuzzers:", argv[0]);
    for (const auto& entry : fuzzers) std::fprintf(stderr, " %s", entry.first.data());
    std::fprintf(stderr, "\n");
    return 2;
  }
  const auto corpus = readCorpus(argv[2]);
  if (corpus.empty()) {
    std::fprintf(stderr, "The corpus %s is empty.\n", argv[2]);
    return 2;
  }
  for (const auto& input : corpus) feed(fuzzer, input);
  const std::uint64_t seed = argc > 4 ? std::strtoull(argv[4], nullptr, 10) : std::random_device()();
  std::printf("%zu inputs; variations of seed %llu\n", corpus.size(), static_cast<unsigned long long>(seed));
  std::fflush(stdout);
  Variations variations(seed);
  for (long left = std::strtol(argv[3], nullptr, 10); left > 0; --left) feed(fuzzer, variations.next(corpus));
  return 0;
}
