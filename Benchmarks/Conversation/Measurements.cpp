#include "Measurements.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "BareChild.h"
#include "Conversations.h"
#include "JSONSamples.h"
#include "Lines.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerJSONLineBuffer.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Ormel.h"
#include "Support/ChildProgram.h"

namespace ormel::benchmarks {

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Pair medians(int rounds, const std::function<double()>& measured, const std::function<double()>& yardstick) {
  std::vector<double> ours;
  std::vector<double> theirs;
  for (int round = 0; round < rounds; ++round) {
    ours.push_back(measured());
    theirs.push_back(yardstick());
  }
  return {median(std::move(ours)), median(std::move(theirs))};
}

namespace {

std::string prompt(std::string_view workload, std::uint64_t amount) {
  return std::string(workload) + ' ' + std::to_string(amount);
}

/// Plays a turn and hands each event to `look`, on a thread of the library.
template <typename Look>
Task<void> play(Thread thread, std::string workload, Look& look) {
  StreamedTurn turn = co_await thread.runStreamed(std::move(workload));
  while (auto event = co_await turn.events.next()) look(*event);
}

struct CountUpdates {
  std::uint64_t count = 0;

  void operator()(const ThreadEvent& event) {
    if (std::holds_alternative<ItemUpdatedEvent>(event.value)) ++count;
  }
};

double eventsPerSecond(const Thread& thread, std::string_view workload, std::uint64_t lines) {
  CountUpdates updates;
  const auto start = Clock::now();
  play(thread, prompt(workload, lines), updates).get();
  const double seconds = secondsSince(start);
  if (updates.count != lines) throw std::runtime_error("events are missing");
  return static_cast<double>(lines) / seconds;
}

double splitAndDecodePerSecond(std::uint64_t lines) {
  constexpr std::size_t pipeRead = 65'536;
  std::string stream;
  while (stream.size() < 16 * pipeRead) stream += notificationLine() + '\n';
  detail::AppServerJSONLineBuffer buffer;
  std::uint64_t decoded = 0;
  const auto start = Clock::now();
  while (decoded < lines) {
    for (std::size_t at = 0; at < stream.size(); at += pipeRead) {
      buffer.append(std::string_view(stream).substr(at, pipeRead));
      while (const auto line = buffer.next()) {
        const JSONValue message = detail::decodePaddedJSON(*line);
        if (message.find("method")) ++decoded;
      }
    }
  }
  return static_cast<double>(decoded) / secondsSince(start);
}

double bareLinesPerSecond(std::uint64_t lines) {
  const auto start = Clock::now();
  BareChild child({"bare", "lines", std::to_string(lines)});
  std::uint64_t bytes = 0;
  for (auto got = child.read(); !got.empty(); got = child.read()) bytes += got.size();
  if (bytes != lines * (notificationLine().size() + 1)) throw std::runtime_error("bytes are missing");
  return static_cast<double>(lines) / secondsSince(start);
}

double age(std::string_view time) {
  const std::uint64_t now = monotonicNanoseconds();
  return static_cast<double>(now - std::stoull(std::string(time)));
}

struct CollectAges {
  std::vector<double> ages;

  void operator()(const ThreadEvent& event) {
    if (const auto* warning = std::get_if<ThreadWarningEvent>(&event.value)) ages.push_back(age(warning->message));
  }
};

double medianLatency(const Thread& thread, std::uint64_t lines) {
  CollectAges collect;
  play(thread, prompt("clock", lines), collect).get();
  if (collect.ages.size() != lines) throw std::runtime_error("events are missing");
  return median(std::move(collect.ages));
}

double medianWakeUp(std::uint64_t lines) {
  const std::string head = clockLine(0);
  const std::size_t prefix = head.find("\"message\":\"") + 11;
  BareChild child({"bare", "clock", std::to_string(lines)});
  std::vector<double> ages;
  for (auto line = child.read(); !line.empty(); line = child.read()) ages.push_back(age(line.substr(prefix)));
  return median(std::move(ages));
}

double nanosecondsOfTurn(const Thread& thread) {
  const auto start = Clock::now();
  thread.run("nothing 0").get();
  return secondsSince(start) * 1e9;
}

double microsecondsOfCommandOutput(const Thread& thread, std::uint64_t bytes) {
  std::uint64_t last = 0;
  const auto look = [&last](const ThreadEvent& event) {
    const auto* updated = std::get_if<ItemUpdatedEvent>(&event.value);
    if (!updated) return;
    if (const auto* command = std::get_if<CommandExecutionItem>(&updated->item.value)) {
      last = command->aggregatedOutput.size();
    }
  };
  const auto start = Clock::now();
  play(thread, prompt("output", bytes), look).get();
  const double seconds = secondsSince(start);
  if (last < bytes) throw std::runtime_error("output is missing");
  return seconds * 1e6;
}

}  // namespace

double residentBytes() {
  std::ifstream file("/proc/self/statm");
  double whole = 0;
  double resident = 0;
  file >> whole >> resident;
  return resident * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

Pair measureEventsOfBlocks(std::uint64_t lines, int rounds) {
  const Thread thread = newThread();
  return medians(
      rounds, [&] { return eventsPerSecond(thread, "blocks", lines); }, [&] { return splitAndDecodePerSecond(lines); });
}

Pair measureEventsOfLines(std::uint64_t lines, int rounds) {
  const Thread thread = newThread();
  return medians(
      rounds, [&] { return eventsPerSecond(thread, "lines", lines); }, [&] { return bareLinesPerSecond(lines); });
}

Pair measureLatency(std::uint64_t lines, int rounds) {
  const Thread thread = newThread();
  return medians(rounds, [&] { return medianLatency(thread, lines); }, [&] { return medianWakeUp(lines); });
}

Pair measureTurns(int rounds) {
  const Thread thread = newThread();
  nanosecondsOfTurn(thread);
  return medians(rounds, [&] { return nanosecondsOfTurn(thread); }, [] { return nanosecondsOfTurn(newThread()); });
}

Pair measureCommandOutput(std::uint64_t bytes, int rounds) {
  const Thread thread = newThread();
  return medians(
      rounds, [&] { return microsecondsOfCommandOutput(thread, bytes); },
      [&] { return microsecondsOfCommandOutput(thread, bytes / 4); });
}

std::size_t measurePeakOfCommandOutput(const char* thisProgram, std::uint64_t bytes) {
  testing::ChildOptions options;
  options.arguments = {"--consume", prompt("output", bytes)};
  testing::ChildProgram consumer(thisProgram, options);
  const testing::ChildEnd end = consumer.wait();
  if (end.status != 0) throw std::runtime_error("the consumer failed: " + consumer.readErrors());
#ifdef __APPLE__
  return static_cast<std::size_t>(end.usage.ru_maxrss);
#else
  return static_cast<std::size_t>(end.usage.ru_maxrss) << 10;
#endif
}

void consumeTurn(const std::string& workload) {
  const auto ignore = [](const ThreadEvent&) {};
  play(newThread(), workload, ignore).get();
}

}  // namespace ormel::benchmarks
