#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "Support/Descriptor.h"
#include "Support/Eventually.h"
#include "ormel-simulator/Machine/MachineAgent.h"

namespace ormel::simulator {
namespace {

/// A named pipe that a command and all that it starts hold open: its end tells that none of them runs any more.
class Lifeline {
 public:
  explicit Lifeline(std::string path) : path_(std::move(path)) {
    ::mkfifo(path_.c_str(), 0600);
    // For both directions, so that opening waits for nobody.
    const testing::Descriptor held(::open(path_.c_str(), O_RDWR | O_CLOEXEC));
    end_ = testing::Descriptor(::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    held_ = testing::Descriptor(::fcntl(held.number(), F_DUPFD_CLOEXEC, 0));
  }

  /// A script whose shell, a child, a grandchild that nobody waits for, and one with a session of its own all stay, and
  /// that none of the usual signals ends.
  std::string script() const {
    return "exec 9>" + path_ +
           "; trap '' TERM HUP INT; sleep 1000 & (sleep 1000 &) ; setsid sleep 1000 & (setsid sh -c 'sleep 1000 & "
           "wait' "
           "&) ; echo ready >&9; ";
  }

  void awaitStart() {
    std::string said;
    while (said != "ready\n") testing::readSome(end_.number(), said);
    held_.reset();
  }

  bool isOver() const { return testing::isReadable(end_.number()); }

  /// Waits for the last one; fails if one stays.
  void awaitEnd() { EXPECT_EQ(testing::readToEnd(end_.number()), ""); }

 private:
  std::string path_;
  testing::Descriptor end_;
  testing::Descriptor held_;
};

std::size_t openDescriptors(pid_t process) {
  const std::filesystem::directory_iterator all("/proc/" + std::to_string(process) + "/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

bool hasChildren(pid_t process) {
  const std::string id = std::to_string(process);
  std::ifstream list("/proc/" + id + "/task/" + id + "/children");
  return list.peek() != std::ifstream::traits_type::eof();
}

TEST(MachineCommands, LeaveNothingBehindHoweverTheSimulatorEnds) {
  struct Row {
    const char* how;
    std::function<void(MachineAgent& agent)> end;
    int status;
  };
  const auto signalled = [](int signal) {
    return [signal](MachineAgent& agent) { ::kill(agent->child().processID(), signal); };
  };
  const Row rows[] = {
      {"the input ends", [](MachineAgent& agent) { agent->child().closeInput(); }, 0},
      {"a turn crashes",
       [](MachineAgent& agent) { agent->ask("turn/start", RawAgent::turnParams(agent->startThread(), "crash")); }, 3},
      {"SIGTERM", signalled(SIGTERM), -SIGTERM},
      {"SIGKILL", signalled(SIGKILL), -SIGKILL},
      {"SIGABRT", signalled(SIGABRT), -SIGABRT},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.how);
    MachineAgent agent;
    Lifeline first(agent.outside() / "first");
    Lifeline second(agent.outside() / "second");
    agent.execute({"sh", "-c", first.script() + "wait"}, paramsOf({{"processId", "p"}}));
    agent.execute({"sh", "-c", second.script() + "wait"}, paramsOf({{"tty", true}}));
    first.awaitStart();
    second.awaitStart();
    row.end(agent);
    EXPECT_EQ(agent->end(), row.status);
    first.awaitEnd();
    second.awaitEnd();
  }
}

TEST(MachineCommands, HaveEndedWithTheSimulatorAtTheLatest) {
  MachineAgent agent;
  Lifeline life(agent.outside() / "life");
  agent.execute({"sh", "-c", life.script() + "wait"});
  life.awaitStart();
  EXPECT_EQ(agent->finish(), 0);
  // Already, and not only soon.
  EXPECT_TRUE(life.isOver());
}

TEST(MachineCommands, TakeWhatTheyLeaveBehindWithThem) {
  MachineAgent agent;
  struct Row {
    const char* rest;
    JSONObjectBuilder params;
    std::int64_t exitCode;
  };
  for (const Row& row : {Row{"echo over; exit 5", {}, 5},
                         {"echo over; kill -KILL $$", {}, 128 + 9},
                         {"echo over; wait", paramsOf({{"timeoutMs", 300}}), 124}}) {
    Lifeline life(agent.outside() / "life");
    const int id = agent.execute({"sh", "-c", life.script() + row.rest}, row.params);
    life.awaitStart();
    const auto ended = agent.awaitEnd(id);
    EXPECT_EQ(ended.exitCode, row.exitCode) << row.rest;
    EXPECT_EQ(ended.stdout, "over\n") << row.rest;
    life.awaitEnd();
    std::filesystem::remove(agent.outside() / "life");
  }
}

TEST(MachineCommands, LeaveNoDescriptorAndNoZombieInTheSimulator) {
  MachineAgent agent;
  const pid_t simulator = agent->child().processID();
  const auto runSome = [&] {
    for (int round = 0; round < 5; ++round) {
      agent.run({"echo", "a"}, paramsOf({{"processId", "p"}}));
      agent.runScript("exit 1", paramsOf({{"tty", true}}));
      agent.runScript("sleep 1000 & exit 1", paramsOf({{"timeoutMs", 10'000}}));
      agent->refusal("command/exec", paramsOf({{"command", textsOf({"no-such-program"})}}));
      agent->refusal("command/exec", paramsOf({{"command", textsOf({"true"})}, {"cwd", "/no/such"}}));
      agent->refusal("fs/readFile", paramsOf({{"path", "no"}}));
      agent->result("fs/watch", paramsOf({{"path", "."}, {"watchId", "w"}}));
      agent->result("fs/unwatch", paramsOf({{"watchId", "w"}}));
    }
  };
  agent->result("fs/readDirectory", paramsOf({{"path", "."}}));
  const std::size_t before = openDescriptors(simulator);
  runSome();
  EXPECT_EQ(openDescriptors(simulator), before);
  EXPECT_TRUE(testing::eventually([&] { return !hasChildren(simulator); }));
}

}  // namespace
}  // namespace ormel::simulator
