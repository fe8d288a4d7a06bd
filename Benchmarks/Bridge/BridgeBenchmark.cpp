// Measures the bridge against a relay that does nothing but copy, in one run and on the same client and host.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Measurements.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "Workload.h"

namespace {

using namespace ormel::benchmarks;
using ormel::JSONMemberInit;
using ormel::JSONValue;

constexpr std::size_t mebibyte = std::size_t{1} << 20;
constexpr std::size_t largestReply = 64 * mebibyte;

class Report {
 public:
  void add(const char* name, const char* title, const Comparison& comparison) {
    std::printf("%-40s bridge %10.1f us   relay %10.1f us   time ratio %.2f   rate ratio %.2f\n", title,
                comparison.bridgeMicroseconds, comparison.relayMicroseconds, comparison.timeRatio(),
                comparison.rateRatio());
    members_.emplace_back(name, JSONValue::object({{"bridgeMicroseconds", comparison.bridgeMicroseconds},
                                                   {"relayMicroseconds", comparison.relayMicroseconds},
                                                   {"timeRatio", comparison.timeRatio()},
                                                   {"rateRatio", comparison.rateRatio()}}));
  }

  void addPeak(const char* name, const char* title, std::size_t bytes) {
    const double ratio = static_cast<double>(bytes) / static_cast<double>(largestReply);
    std::printf("%-40s %.1f MiB, %.2f times the reply\n", title,
                static_cast<double>(bytes) / static_cast<double>(mebibyte), ratio);
    members_.emplace_back(name, JSONValue::object({{"bytes", bytes}, {"replyRatio", ratio}}));
  }

  void write(const std::string& path) const {
    std::ofstream file(path);
    file << JSONValue::object(members_) << "\n";
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
  }

 private:
  std::vector<JSONMemberInit> members_;
};

std::string requestOf(const std::string& content) {
  return R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":)" + content + "}";
}

Comparison roundTrips(const std::string& content, int batches, int exchangesPerBatch) {
  return measureRoundTrips(requestOf(content), content, batches, exchangesPerBatch);
}

std::string pageElement() {
  const std::string page = pageContent(3);
  return page.substr(1, page.size() - 2);
}

struct Measurement {
  const char* name;
  void (*run)(Report& report, const char* name);
};

constexpr Measurement measurements[] = {
    {"peakMemorySingleText",
     [](Report& report, const char* name) {
       report.addPeak(name, "peak memory, 64 MiB in one text",
                      measurePeakMemory(largestReply, replyHead(1) + '"', "x", "\"}"));
     }},
    {"peakMemoryPage",
     [](Report& report, const char* name) {
       report.addPeak(name, "peak memory, 64 MiB of page content",
                      measurePeakMemory(largestReply, replyHead(1) + '[' + pageElement(),
                                        std::string(",").append(pageElement()), "]}"));
     }},
    {"start", [](Report& report, const char* name) { report.add(name, "start to connected", measureStarts(200)); }},
    {"roundTrip300B",
     [](Report& report, const char* name) {
       report.add(name, "round trip, 300 bytes", roundTrips(pageContent(250), 40, 1000));
     }},
    {"roundTrip4MiBPage",
     [](Report& report, const char* name) {
       report.add(name, "round trip, 4 MiB of page content", roundTrips(pageContent(4 * mebibyte), 20, 5));
     }},
    {"roundTrip4MiBText",
     [](Report& report, const char* name) {
       report.add(name, "round trip, 4 MiB in one text", roundTrips(singleText(4 * mebibyte), 20, 5));
     }},
};

struct Arguments {
  std::optional<std::string> jsonFile;
  std::optional<std::string> only;
};

std::optional<Arguments> parseArguments(int count, char** texts) {
  Arguments parsed;
  if (count % 2 == 0) return std::nullopt;
  for (int at = 1; at < count; at += 2) {
    const std::string_view option = texts[at];
    if (option == "--json") {
      parsed.jsonFile = texts[at + 1];
    } else if (option == "--only") {
      parsed.only = texts[at + 1];
    } else {
      return std::nullopt;
    }
  }
  return parsed;
}

void run(const Arguments& arguments) {
  Report report;
  for (const auto& measurement : measurements) {
    if (!arguments.only || *arguments.only == measurement.name) measurement.run(report, measurement.name);
  }
  if (arguments.jsonFile) report.write(*arguments.jsonFile);
}

}  // namespace

int main(int count, char** texts) {
  const auto arguments = parseArguments(count, texts);
  if (!arguments) {
    std::fprintf(stderr, "usage: %s [--json FILE] [--only MEASUREMENT]\n", texts[0]);
    return EXIT_FAILURE;
  }
  try {
    run(*arguments);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bridge-benchmark: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
