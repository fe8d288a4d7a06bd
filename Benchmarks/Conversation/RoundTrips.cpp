#include "RoundTrips.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Conversations.h"
#include "EpollExchange.h"
#include "Lines.h"
#include "SystemCalls.h"

namespace ormel::benchmarks {

namespace {

Task<void> steerManyTimes(Thread thread, std::uint64_t requests) {
  for (std::uint64_t request = 0; request < requests; ++request) co_await thread.steer("go on");
}

Task<void> steerAndTime(Thread thread, std::uint64_t requests, std::vector<double>& times) {
  for (std::uint64_t request = 0; request < requests; ++request) {
    const auto start = Clock::now();
    co_await thread.steer("go on");
    times.push_back(secondsSince(start) * 1e9);
  }
}

void steerBlocking(const Thread& thread, std::uint64_t requests) {
  for (std::uint64_t request = 0; request < requests; ++request) thread.steer("go on").get();
}

/// A turn that stays open, so that it can be steered.
class HeldTurn {
 public:
  explicit HeldTurn(const Thread& thread) : thread_(thread), turn_(thread.runStreamed("held 0").get()) {
    thread_.steer("go on").get();
  }

  void end() {
    thread_.steer("end").get();
    while (turn_.events.nextBlocking()) {
    }
  }

 private:
  const Thread& thread_;
  StreamedTurn turn_;
};

double nanosecondsEach(std::uint64_t requests, const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return secondsSince(start) * 1e9 / static_cast<double>(requests);
}

double nanosecondsPerSteer(const Thread& thread, std::uint64_t requests) {
  HeldTurn turn(thread);
  const double each = nanosecondsEach(requests, [&] { steerManyTimes(thread, requests).get(); });
  turn.end();
  return each;
}

double nanosecondsPerBlockingSteer(const Thread& thread, std::uint64_t requests) {
  HeldTurn turn(thread);
  const double each = nanosecondsEach(requests, [&] { steerBlocking(thread, requests); });
  turn.end();
  return each;
}

/// The request that `Thread::steer` writes.
std::string steerLine() {
  return R"({"id":1000,"jsonrpc":"2.0","method":"turn/steer","params":{"expectedTurnId":")" + turnID +
         R"(","input":[{"text":"go on","text_elements":[],"type":"text"}],"threadId":")" + threadID + "\"}}\n";
}

void exchangeManyTimes(EpollExchange& bare, std::uint64_t requests) {
  const std::string line = steerLine();
  for (std::uint64_t request = 0; request < requests; ++request) bare.exchange(line);
}

double nanosecondsPerExchange(std::uint64_t requests) {
  EpollExchange bare;
  exchangeManyTimes(bare, 1);
  return nanosecondsEach(requests, [&] { exchangeManyTimes(bare, requests); });
}

std::vector<double> timesOfSteers(const Thread& thread, std::uint64_t requests) {
  std::vector<double> times;
  times.reserve(requests);
  HeldTurn turn(thread);
  steerAndTime(thread, requests, times).get();
  turn.end();
  std::sort(times.begin(), times.end());
  return times;
}

std::vector<double> timesOfExchanges(std::uint64_t requests) {
  EpollExchange bare;
  exchangeManyTimes(bare, 1);
  const std::string line = steerLine();
  std::vector<double> times;
  times.reserve(requests);
  for (std::uint64_t request = 0; request < requests; ++request) {
    const auto start = Clock::now();
    bare.exchange(line);
    times.push_back(secondsSince(start) * 1e9);
  }
  std::sort(times.begin(), times.end());
  return times;
}

double below(const std::vector<double>& sorted, double share) {
  return sorted.at(static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1)));
}

/// A process starts, ends and shakes hands as well; the difference of two numbers of round trips is free of that.
double systemCallsEach(const std::string& thisProgram, const std::string& manner, std::uint64_t requests) {
  const auto callsOf = [&](std::uint64_t number) {
    return countSystemCallsOf({thisProgram, "--round-trips", manner + ' ' + std::to_string(number)});
  };
  const double few = callsOf(requests / 10);
  const double many = callsOf(requests + requests / 10);
  return (many - few) / static_cast<double>(requests);
}

}  // namespace

Pair measureRoundTrip(std::uint64_t requests, int rounds) {
  const Thread thread = newThread();
  return medians(
      rounds, [&] { return nanosecondsPerSteer(thread, requests); }, [&] { return nanosecondsPerExchange(requests); });
}

Pair measureBlockingRoundTrip(std::uint64_t requests, int rounds) {
  const Thread thread = newThread();
  return medians(
      rounds, [&] { return nanosecondsPerBlockingSteer(thread, requests); },
      [&] { return nanosecondsPerExchange(requests); });
}

RoundTripTimes measureRoundTripTimes(std::uint64_t requests, int rounds) {
  const Thread thread = newThread();
  std::vector<double> ours[2];
  std::vector<double> theirs[2];
  for (int round = 0; round < rounds; ++round) {
    const std::vector<double> steers = timesOfSteers(thread, requests);
    const std::vector<double> exchanges = timesOfExchanges(requests);
    for (const auto& [times, shares] : {std::pair(&steers, ours), std::pair(&exchanges, theirs)}) {
      shares[0].push_back(below(*times, 0.5));
      shares[1].push_back(below(*times, 0.99));
    }
  }
  return {{median(ours[0]), median(theirs[0])}, {median(ours[1]), median(theirs[1])}};
}

Pair measureMemoryOfRequests(std::uint64_t requests) {
  const Thread thread = newThread();
  nanosecondsPerSteer(thread, requests / 10);
  const double before = residentBytes();
  nanosecondsPerSteer(thread, requests);
  return {residentBytes(), before};
}

Pair countSystemCalls(const std::string& thisProgram, const std::string& manner, std::uint64_t requests) {
  return {systemCallsEach(thisProgram, manner, requests), systemCallsEach(thisProgram, "bare", requests)};
}

void makeRoundTrips(const std::string& manner, std::uint64_t requests) {
  if (manner == "bare") {
    EpollExchange bare;
    return exchangeManyTimes(bare, requests);
  }
  if (manner != "awaited" && manner != "blocking") throw std::runtime_error("no manner of round trips: " + manner);
  const Thread thread = newThread();
  HeldTurn turn(thread);
  if (manner == "awaited") {
    steerManyTimes(thread, requests).get();
  } else {
    steerBlocking(thread, requests);
  }
  turn.end();
}

}  // namespace ormel::benchmarks
