// Measures a conversation from the server's pipe to the application's events, against what the pipe and the decoder can
// do.

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BusyCores.h"
#include "Conversations.h"
#include "ManagementMeasurements.h"
#include "ManyConversations.h"
#include "Measurements.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "RoundTrips.h"
#include "SystemCalls.h"

namespace {

using namespace ormel::benchmarks;
using ormel::JSONMemberInit;
using ormel::JSONValue;

constexpr std::uint64_t outputBytes = 100'000'000;

/// The limit that a ratio has to stay below or, for a rate, above.
struct Limit {
  double ratio;
  bool isRate;

  bool allows(double measured) const { return isRate ? measured >= ratio : measured <= ratio; }
  const char* word() const { return isRate ? "at least" : "at most"; }
};

constexpr std::optional<Limit> noLimit;

constexpr std::optional<Limit> atMost(double ratio) { return Limit{ratio, false}; }

constexpr std::optional<Limit> atLeast(double ratio) { return Limit{ratio, true}; }

class Report {
 public:
  void add(const std::string& name, const char* title, const char* unit, const Pair& pair,
           const std::optional<Limit>& limit) {
    if (!std::isfinite(pair.ratio())) throw std::runtime_error(name + ": the ratio is no number");
    std::printf("%-66s %12.*f against %12.*f %s, ratio %.2f", title, decimals(pair.measured), pair.measured,
                decimals(pair.yardstick), pair.yardstick, unit, pair.ratio());
    std::vector<JSONMemberInit> row{
        {"measured", pair.measured}, {"yardstick", pair.yardstick}, {"ratio", pair.ratio()}};
    if (limit) {
      std::printf(" (%s %.2f)%s", limit->word(), limit->ratio, limit->allows(pair.ratio()) ? "" : "  MISSED");
      row.emplace_back(limit->isRate ? "atLeast" : "atMost", limit->ratio);
    }
    endLine();
    rows_.emplace_back(name, JSONValue::object(row));
  }

  /// For a figure that this system does not give.
  void addHidden(const std::string& name, const char* title, const std::string& reason) {
    std::printf("%-66s not measured here: %s", title, reason.c_str());
    endLine();
    rows_.emplace_back(name, JSONValue::object({{"hidden", reason}}));
  }

  void write(const std::string& path) const {
    std::vector<JSONMemberInit> members;
    for (const auto& [name, row] : rows_) members.emplace_back(name, row);
    std::ofstream file(path);
    file << JSONValue::object(members) << "\n";
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
  }

 private:
  static int decimals(double figure) { return figure < 100 ? 2 : 0; }
  static void endLine() {
    std::printf("\n");
    std::fflush(stdout);
  }

  std::vector<std::pair<std::string, JSONValue>> rows_;
};

struct Arguments {
  std::string thisProgram;
  bool isShort = false;
  bool isBesideBusyCores = false;
  int idleSeconds = 60;
  std::optional<std::string> jsonFile;
  std::optional<std::string> only;
  std::optional<std::string> consume;
  std::optional<std::string> roundTrips;

  /// A short run does a tenth of the work.
  std::uint64_t amount(std::uint64_t whole) const { return isShort ? whole / 10 : whole; }
  int number(int whole) const { return static_cast<int>(amount(static_cast<std::uint64_t>(whole))); }
};

/// The limits are those of a machine at rest; beside busy cores a ratio tells what is left of it.
struct Measurement {
  const char* name;
  void (*run)(Report& report, const std::string& name, const Arguments& arguments);
};

constexpr int rounds = 5;

void addPeak(Report& report, const std::string& name, const Arguments& arguments) {
  const auto peak = static_cast<double>(measurePeakOfCommandOutput(arguments.thisProgram.c_str(), outputBytes));
  report.add(name, "peak memory, 100 MB of a command's output, against the text", "bytes",
             {peak, static_cast<double>(outputBytes)}, atMost(4));
}

void addRoundTripTimes(Report& report, const std::string& name, const Arguments& arguments) {
  const RoundTripTimes times = measureRoundTripTimes(arguments.amount(20'000), rounds);
  report.add(name + "P50", "round trip, the time of half of them, against a bare exchange", "ns", times.half, noLimit);
  report.add(name + "P99", "round trip, the time of 99 of 100, against a bare exchange", "ns", times.most, noLimit);
}

void addSystemCalls(Report& report, const std::string& name, const char* title, const Arguments& arguments,
                    const char* manner, const std::optional<Limit>& limit) {
  try {
    report.add(name, title, "calls", countSystemCalls(arguments.thisProgram, manner, arguments.amount(20'000)), limit);
  } catch (const SystemCallsAreHidden& error) {
    report.addHidden(name, title, error.what());
  }
}

/// The bare exchange takes three, and a client may take one more.
constexpr double mostSystemCalls = 4.0 / 3;
/// Watched threads are slow, so that now and then one looks around that would not otherwise.
constexpr double toleranceOfCounting = 0.05;

// The peak comes first: a child counts what this process has held as its own.
constexpr Measurement measurements[] = {
    {"peakMemoryOutput", addPeak},
    {"eventsOfBlocks",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "events, server writes blocks, against splitting and decoding", "a second",
                  measureEventsOfBlocks(arguments.amount(1'000'000), rounds), atLeast(0.65));
     }},
    {"eventsOfLines",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "events, one line a write, against reading the bare pipe", "a second",
                  measureEventsOfLines(arguments.amount(500'000), rounds), atLeast(0.6));
     }},
    {"latency",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "latency of one event, idle, against a wake-up by the bare pipe", "ns",
                  measureLatency(arguments.amount(1000), rounds), atMost(1.8));
     }},
    {"roundTrip",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "request and answer, awaited, against a bare exchange over epoll", "ns",
                  measureRoundTrip(arguments.amount(20'000), rounds), atMost(1.6));
     }},
    {"blockingRoundTrip",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "request and answer, blocking get(), against the same", "ns",
                  measureBlockingRoundTrip(arguments.amount(20'000), rounds), atMost(3));
     }},
    {"roundTripTime", addRoundTripTimes},
    {"systemCalls",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       addSystemCalls(report, name, "system calls of a round trip, awaited, against the bare one's", arguments,
                      "awaited", atMost(mostSystemCalls + toleranceOfCounting));
     }},
    {"blockingSystemCalls",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       addSystemCalls(report, name, "system calls of a round trip, blocking, against the bare one's", arguments,
                      "blocking", noLimit);
     }},
    {"memoryOfRequests",
     [](Report& report, const std::string& name, const Arguments&) {
       report.add(name, "memory after 100,000 requests, against before", "bytes", measureMemoryOfRequests(100'000),
                  atMost(1.05));
     }},
    {"turn",
     [](Report& report, const std::string& name, const Arguments&) {
       report.add(name, "empty turn on a live process, against one that starts it", "ns", measureTurns(20), noLimit);
     }},
    {"conversationsAtOnce",
     [](Report& report, const std::string& name, const Arguments&) {
       report.add(name, "turns of 400 conversations at once, against one at a time", "a second",
                  measureConversationsAtOnce(400, rounds), atLeast(1.8));
     }},
    {"idleConversations",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "processor time, 1,000 idle conversations, against 1 ms a minute", "us",
                  measureIdleConversations(1000, std::chrono::seconds(arguments.idleSeconds)), atMost(1));
     }},
    {"oneShotCall",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "one-shot call, against bare start, handshake and exchange", "ns",
                  measureOneShotCall(arguments.number(200)), atMost(1.2));
     }},
    {"sessionCall",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "call on a session, against a bare exchange", "ns",
                  measureSessionCall(arguments.amount(20'000), rounds), atMost(3));
     }},
    {"callsInFlight",
     [](Report& report, const std::string& name, const Arguments& arguments) {
       report.add(name, "64 calls at once on a session, against one after the other", "ns",
                  measureCallsInFlight(arguments.number(200)), atMost(1));
     }},
    {"memoryOfSessions",
     [](Report& report, const std::string& name, const Arguments&) {
       report.add(name, "memory after 500 sessions with a call each, against before", "bytes",
                  measureMemoryOfSessions(500), atMost(1.05));
     }},
    {"commandOutput",
     [](Report& report, const std::string& name, const Arguments&) {
       report.add(name, "time of 100 MB of a command's output, against 25 MB", "us",
                  measureCommandOutput(outputBytes, 3), atMost(6));
     }},
};

constexpr const char* usage =
    "usage: %s [--json FILE] [--only MEASUREMENT,...] [--short] [--beside-busy-cores] [--idle-seconds SECONDS]\n";

std::optional<Arguments> parseArguments(int count, char** texts) {
  Arguments parsed;
  parsed.thisProgram = texts[0];
  for (int at = 1; at < count; ++at) {
    const std::string_view option = texts[at];
    if (option == "--short") {
      parsed.isShort = true;
      continue;
    }
    if (option == "--beside-busy-cores") {
      parsed.isBesideBusyCores = true;
      continue;
    }
    if (++at == count) return std::nullopt;
    if (option == "--json") {
      parsed.jsonFile = texts[at];
    } else if (option == "--only") {
      parsed.only = texts[at];
    } else if (option == "--idle-seconds") {
      parsed.idleSeconds = std::atoi(texts[at]);
      if (parsed.idleSeconds < 1) return std::nullopt;
    } else if (option == "--consume") {
      parsed.consume = texts[at];
    } else if (option == "--round-trips") {
      parsed.roundTrips = texts[at];
    } else {
      return std::nullopt;
    }
  }
  return parsed;
}

/// The names of the measurements, all of them where none is asked for.
std::vector<std::string> namesIn(const std::optional<std::string>& only) {
  std::vector<std::string> names;
  if (!only) {
    for (const auto& measurement : measurements) names.emplace_back(measurement.name);
    return names;
  }
  std::istringstream list(*only);
  for (std::string name; std::getline(list, name, ',');) names.push_back(name);
  return names;
}

const Measurement& measurementNamed(const std::string& name) {
  for (const auto& measurement : measurements) {
    if (name == measurement.name) return measurement;
  }
  throw std::runtime_error("there is no measurement " + name);
}

void measure(const Arguments& arguments) {
  std::vector<const Measurement*> wanted;
  for (const std::string& name : namesIn(arguments.only)) wanted.push_back(&measurementNamed(name));
  const auto busyCores = arguments.isBesideBusyCores ? std::make_unique<BusyCores>() : nullptr;
  Report report;
  const auto start = Clock::now();
  std::size_t number = 0;
  for (const Measurement* measurement : wanted) {
    const auto seconds = static_cast<int>(secondsSince(start));
    std::fprintf(stderr, "conversation-benchmark: [%zu of %zu, %d:%02d] %s\n", ++number, wanted.size(), seconds / 60,
                 seconds % 60, measurement->name);
    try {
      measurement->run(report, measurement->name, arguments);
    } catch (const std::exception& error) {
      throw std::runtime_error(std::string(measurement->name) + ": " + error.what());
    }
  }
  if (arguments.jsonFile) report.write(*arguments.jsonFile);
}

void run(const Arguments& arguments) {
  if (arguments.consume) return consumeTurn(*arguments.consume);
  if (!arguments.roundTrips) return measure(arguments);
  std::istringstream words(*arguments.roundTrips);
  std::string manner;
  std::uint64_t requests = 0;
  words >> manner >> requests;
  makeRoundTrips(manner, requests);
}

}  // namespace

int main(int count, char** texts) {
  if (count > 2 && std::string_view(texts[1]) == countingWord) return countSystemCallsHere(texts + 2);
  const auto arguments = parseArguments(count, texts);
  if (!arguments) {
    std::fprintf(stderr, usage, texts[0]);
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
