#include "ManagementMeasurements.h"

#include <signal.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Conversations.h"
#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"
#include "OrmelSDK/Concurrency/TaskGroup.h"
#include "OrmelSDK/Ormel.h"
#include "Support/ChildProgram.h"
#include "Support/Eventually.h"
#include "Support/ProcessResources.h"

namespace ormel::benchmarks {

namespace {

double nanosecondsOf(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

Ormel ormelOnServer() {
  OrmelOptions options;
  options.ormelPathOverride = ORMEL_CONVERSATION_SERVER;
  return Ormel(options);
}

/// The server as the library starts it, spoken with by blocking calls.
class BareServer {
 public:
  BareServer() : program_("/usr/bin/env", settings()) { testing::setNonBlocking(program_.outputDescriptor(), false); }
  ~BareServer() { ::kill(program_.processID(), SIGTERM); }
  BareServer(const BareServer&) = delete;
  BareServer& operator=(const BareServer&) = delete;

  void shakeHands() {
    const JSONValue params = detail::appServerInitializeParams(AppServerInitializeCapabilities::forManagement());
    exchange(R"({"id":1,"method":"initialize","params":)" + params.encode() + "}\n");
    program_.write("{\"method\":\"initialized\"}\n");
  }
  void exchange(std::string_view line) {
    program_.write(line);
    if (program_.readLine().empty()) throw std::runtime_error("the bare server has gone");
  }
  void archive() { exchange("{\"id\":2,\"method\":\"thread/archive\",\"params\":{\"threadId\":\"t1\"}}\n"); }

 private:
  static testing::ChildOptions settings() {
    testing::ChildOptions options;
    options.arguments = {ORMEL_CONVERSATION_SERVER, "app-server", "--listen", "stdio://", "--config",
                         "features.goals=true"};
    return options;
  }

  testing::ChildProgram program_;
};

Task<void> archiveManyTimes(OrmelControlSession session, std::uint64_t calls) {
  for (std::uint64_t call = 0; call < calls; ++call) co_await session.archiveThread("t1");
}

Task<void> archiveTogether(OrmelControlSession session, int calls) {
  TaskGroup group;
  for (int call = 0; call < calls; ++call) group.spawn(session.archiveThread("t1"));
  co_await group.join();
}

void callOnce(const Ormel& ormel) {
  const OrmelControlSession session = ormel.makeControlSession();
  session.archiveThread("t1").get();
  session.close().get();
}

}  // namespace

Pair measureOneShotCall(int rounds) {
  const Ormel ormel = ormelOnServer();
  const auto byLibrary = [&] { ormel.archiveThread("t1").get(); };
  const auto bare = [] {
    BareServer server;
    server.shakeHands();
    server.archive();
  };
  return medians(rounds, [&] { return nanosecondsOf(byLibrary); }, [&] { return nanosecondsOf(bare); });
}

Pair measureSessionCall(std::uint64_t calls, int rounds) {
  const OrmelControlSession session = ormelOnServer().makeControlSession();
  session.archiveThread("t1").get();
  BareServer server;
  server.shakeHands();
  const auto each = static_cast<double>(calls);
  const auto bare = [&] {
    for (std::uint64_t call = 0; call < calls; ++call) server.archive();
  };
  const Pair pair = medians(
      rounds, [&] { return nanosecondsOf([&] { archiveManyTimes(session, calls).get(); }) / each; },
      [&] { return nanosecondsOf(bare) / each; });
  session.close().get();
  return pair;
}

Pair measureCallsInFlight(int rounds) {
  constexpr int calls = 64;
  const OrmelControlSession session = ormelOnServer().makeControlSession();
  session.archiveThread("t1").get();
  const Pair pair = medians(
      rounds, [&] { return nanosecondsOf([&] { archiveTogether(session, calls).get(); }); },
      [&] { return nanosecondsOf([&] { archiveManyTimes(session, calls).get(); }); });
  session.close().get();
  return pair;
}

Pair measureMemoryOfSessions(int sessions) {
  const Ormel ormel = ormelOnServer();
  for (int warmUp = 0; warmUp < 20; ++warmUp) callOnce(ormel);
  const auto nothingIsLeft = [](const testing::ProcessResources& before) {
    return testing::eventually([&] { return testing::ProcessResources::now().isNoMoreThan(before); });
  };
  testing::eventually([] { return !testing::ProcessResources::now().hasChildren; });
  const auto resources = testing::ProcessResources::now();
  const double before = residentBytes();
  for (int session = 0; session < sessions; ++session) callOnce(ormel);
  if (!nothingIsLeft(resources)) throw std::runtime_error("sessions have left something behind");
  return {residentBytes(), before};
}

}  // namespace ormel::benchmarks
