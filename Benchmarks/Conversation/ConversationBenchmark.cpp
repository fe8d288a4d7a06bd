// Measures a conversation from the server's pipe to the application's events, against what the pipe and the decoder can
// do.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "ManagementMeasurements.h"
#include "Measurements.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace {

using namespace ormel::benchmarks;
using ormel::JSONMemberInit;
using ormel::JSONValue;

constexpr std::uint64_t outputBytes = 100'000'000;

class Report {
 public:
  /// `limit` is what the ratio has to stay below or, for a rate, above; negative for a figure without a promise.
  void add(const char* name, const char* title, const char* unit, const Pair& pair, double limit = -1,
           bool isRate = false) {
    const bool kept = limit < 0 || (isRate ? pair.ratio() >= limit : pair.ratio() <= limit);
    std::printf("%-66s %12.0f against %12.0f %s, ratio %.2f", title, pair.measured, pair.yardstick, unit, pair.ratio());
    if (limit >= 0) std::printf(" (%s %.2f)%s", isRate ? "at least" : "at most", limit, kept ? "" : "  MISSED");
    std::printf("\n");
    std::fflush(stdout);
    members_.emplace_back(
        name, JSONValue::object({{"measured", pair.measured}, {"yardstick", pair.yardstick}, {"ratio", pair.ratio()}}));
  }

  void write(const std::string& path) const {
    std::ofstream file(path);
    file << JSONValue::object(members_) << "\n";
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
  }

 private:
  std::vector<JSONMemberInit> members_;
};

struct Arguments {
  const char* thisProgram;
  std::optional<std::string> jsonFile;
  std::optional<std::string> only;
  std::optional<std::string> consume;
};

struct Measurement {
  const char* name;
  void (*run)(Report& report, const char* name, const Arguments& arguments);
};

void addPeak(Report& report, const char* name, const Arguments& arguments) {
  const auto peak = static_cast<double>(measurePeakOfCommandOutput(arguments.thisProgram, outputBytes));
  report.add(name, "peak memory, 100 MB of a command's output, against the text", "bytes",
             {peak, static_cast<double>(outputBytes)}, 4);
}

// The peak comes first: a child counts what this process has held as its own.
constexpr Measurement measurements[] = {
    {"peakMemoryOutput", addPeak},
    {"eventsOfBlocks",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "events, server writes blocks, against splitting and decoding", "a second",
                  measureEventsOfBlocks(1'000'000, 5), 1.0 / 3, true);
     }},
    {"eventsOfLines",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "events, one line a write, against reading the bare pipe", "a second",
                  measureEventsOfLines(500'000, 5), 0.5, true);
     }},
    {"latency",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "latency of one event, idle, against a wake-up by the bare pipe", "ns", measureLatency(500, 5),
                  4);
     }},
    {"roundTrip",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "request and answer, against a bare exchange", "ns", measureRoundTrip(20'000, 5), 3);
     }},
    {"memoryOfRequests",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "memory after 100,000 requests, against before", "bytes", measureMemoryOfRequests(100'000),
                  1.05);
     }},
    {"turn",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "empty turn on a live process, against one that starts it", "ns", measureTurns(20));
     }},
    {"oneShotCall",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "one-shot call, against bare start, handshake and exchange", "ns", measureOneShotCall(200),
                  1.2);
     }},
    {"sessionCall",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "call on a session, against a bare exchange", "ns", measureSessionCall(20'000, 5), 3);
     }},
    {"callsInFlight",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "64 calls at once on a session, against one after the other", "ns", measureCallsInFlight(200),
                  1);
     }},
    {"memoryOfSessions",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "memory after 500 sessions with a call each, against before", "bytes",
                  measureMemoryOfSessions(500), 1.05);
     }},
    {"commandOutput",
     [](Report& report, const char* name, const Arguments&) {
       report.add(name, "time of 100 MB of a command's output, against 25 MB", "us",
                  measureCommandOutput(outputBytes, 3), 6);
     }},
};

std::optional<Arguments> parseArguments(int count, char** texts) {
  Arguments parsed{texts[0], {}, {}, {}};
  if (count % 2 == 0) return std::nullopt;
  for (int at = 1; at < count; at += 2) {
    const std::string_view option = texts[at];
    if (option == "--json") {
      parsed.jsonFile = texts[at + 1];
    } else if (option == "--only") {
      parsed.only = texts[at + 1];
    } else if (option == "--consume") {
      parsed.consume = texts[at + 1];
    } else {
      return std::nullopt;
    }
  }
  return parsed;
}

void run(const Arguments& arguments) {
  if (arguments.consume) return consumeTurn(*arguments.consume);
  Report report;
  for (const auto& measurement : measurements) {
    if (!arguments.only || *arguments.only == measurement.name) measurement.run(report, measurement.name, arguments);
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
    std::fprintf(stderr, "conversation-benchmark: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
