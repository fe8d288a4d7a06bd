// Measures the bridge against a relay that does nothing but copy, in one run and on the same client and host.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Measurements.h"
#include "OrmelSDK/JSONValue.h"
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

void measurePeaks(Report& report) {
  report.addPeak("peakMemorySingleText", "peak memory, 64 MiB in one text",
                 measurePeakMemory(largestReply, replyHead(1) + '"', "x", "\"}"));
  const std::string page = pageContent(1);
  const std::string element = page.substr(1, page.size() - 2);
  report.addPeak("peakMemoryPage", "peak memory, 64 MiB of page content",
                 measurePeakMemory(largestReply, replyHead(1) + '[' + element, "," + element, "]}"));
}

Report measureAll() {
  Report report;
  measurePeaks(report);
  report.add("start", "start to connected", measureStarts(200));
  report.add("roundTrip300B", "round trip, 300 bytes", roundTrips(pageContent(250), 40, 1000));
  report.add("roundTrip4MiBPage", "round trip, 4 MiB of page content", roundTrips(pageContent(4 * mebibyte), 20, 5));
  report.add("roundTrip4MiBText", "round trip, 4 MiB in one text", roundTrips(singleText(4 * mebibyte), 20, 5));
  return report;
}

}  // namespace

int main(int count, char** arguments) {
  const bool wantsJSON = count == 3 && std::string_view(arguments[1]) == "--json";
  if (count != 1 && !wantsJSON) {
    std::fprintf(stderr, "usage: %s [--json FILE]\n", arguments[0]);
    return EXIT_FAILURE;
  }
  try {
    const Report report = measureAll();
    if (wantsJSON) report.write(arguments[2]);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bridge-benchmark: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
