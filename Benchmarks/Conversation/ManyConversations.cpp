#include "ManyConversations.h"

#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Conversations.h"
#include "OrmelSDK/Concurrency/TaskGroup.h"

namespace ormel::benchmarks {

namespace {

constexpr int turnsOfConversation = 10;
/// Threads that were needed for the last turns end some seconds after them.
constexpr std::chrono::seconds timeToRest{6};

/// Each conversation takes three pipes and a descriptor of its process.
void allowDescriptors(int conversations) {
  const auto wanted = static_cast<rlim_t>(conversations) * 8 + 256;
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_cur >= wanted) return;
  limit.rlim_cur = std::min(wanted, limit.rlim_max);
  if (limit.rlim_cur < wanted || ::setrlimit(RLIMIT_NOFILE, &limit) != 0) {
    throw std::runtime_error(std::to_string(conversations) + " conversations need " + std::to_string(wanted) +
                             " descriptors, and the system allows fewer");
  }
}

/// Conversations that live: each has had a turn.
std::vector<Thread> liveThreads(int conversations) {
  allowDescriptors(conversations);
  std::vector<Thread> threads;
  for (int number = 0; number < conversations; ++number) {
    threads.push_back(newThread());
    threads.back().run("nothing 0").get();
  }
  return threads;
}

Task<void> playTurns(Thread thread, int turns) {
  for (int turn = 0; turn < turns; ++turn) co_await thread.run("nothing 0");
}

Task<void> playAtOnce(const std::vector<Thread>& threads) {
  TaskGroup group;
  for (const Thread& thread : threads) group.spawn(playTurns(thread, turnsOfConversation));
  co_await group.join();
}

Task<void> playInTurn(const std::vector<Thread>& threads) {
  for (int round = 0; round < turnsOfConversation; ++round) {
    for (const Thread& thread : threads) co_await playTurns(thread, 1);
  }
}

double turnsPerSecond(Task<void> (*play)(const std::vector<Thread>&), const std::vector<Thread>& threads) {
  const auto start = Clock::now();
  play(threads).get();
  return static_cast<double>(threads.size()) * turnsOfConversation / secondsSince(start);
}

double processorMicroseconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

}  // namespace

Pair measureConversationsAtOnce(int conversations, int rounds) {
  const std::vector<Thread> threads = liveThreads(conversations);
  return medians(
      rounds, [&] { return turnsPerSecond(playAtOnce, threads); }, [&] { return turnsPerSecond(playInTurn, threads); });
}

Pair measureIdleConversations(int conversations, std::chrono::seconds time) {
  const std::vector<Thread> threads = liveThreads(conversations);
  std::this_thread::sleep_for(timeToRest);
  const double before = processorMicroseconds();
  std::this_thread::sleep_for(time);
  const double after = processorMicroseconds();
  constexpr double microsecondsThatAreNone = 1'000;
  return {after - before, microsecondsThatAreNone * static_cast<double>(time.count()) / 60};
}

}  // namespace ormel::benchmarks
