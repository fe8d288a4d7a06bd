#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "Support/TemporaryDirectory.h"
#include "ormel-simulator/Agent/RawAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

std::vector<std::string> filesOf(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
  return names;
}

TEST(AgentState, IsOneFileForEachThreadThatIsToLast) {
  const testing::TemporaryDirectory folder;
  const std::string state = folder / "made/by/the/agent";
  RawAgent agent(0, state);
  agent.initialize();
  JSONObjectBuilder ephemeral;
  agent.result("thread/start", ephemeral.set("ephemeral", true));
  const std::string thread = agent.startThread();
  agent.say(thread, "hello");
  EXPECT_THAT(filesOf(state), UnorderedElementsAre(".lock", thread + ".json"));
}

TEST(AgentState, KeepsAllThatAThreadIs) {
  const testing::TemporaryDirectory folder;
  const std::string state = folder.path();
  const JSONValue tools = JSONValue::decode(R"([{"type":"function","name":"clock","inputSchema":{}}])");
  JSONObjectBuilder params;
  params.set("cwd", "/some/where").set("model", "large").set("developerInstructions", "Be kind");
  params.set("dynamicTools", tools).set("approvalPolicy", "never");
  std::string thread;
  JSONValue before;
  {
    RawAgent agent(0, state);
    agent.initialize();
    thread = RawAgent::threadID(agent.result("thread/start", params));
    agent.say(thread, "hello");
    before = agent.result("thread/resume", ofThread(thread));
    EXPECT_EQ(agent.finish(), 0);
  }
  RawAgent agent(0, state);
  agent.initialize();
  EXPECT_EQ(agent.result("thread/resume", ofThread(thread)), before);
  EXPECT_THAT(agent.say(thread, "again"), AllOf(HasSubstr("before: \"hello\"."), HasSubstr("\"Be kind\"")));
  agent.startTurn(thread, "use tool");
  EXPECT_EQ(textMember(anyMember(agent.await("item/tool/call"), "params"), "tool"), "clock");
}

TEST(AgentState, IsNotLookedForOutsideOfItsFolder) {
  const testing::TemporaryDirectory folder;
  folder.addFile("secret.json", R"({"thread":{"id":"x"}})");
  RawAgent agent(0, folder / "state");
  agent.initialize();
  EXPECT_EQ(agent.refusal("thread/read", ofThread("../secret")),
            "-32600 thread not found: ../secret; the simulator remembers 0 threads in " + folder / "state");
}

/// Where the agent keeps threads if nothing else is told.
std::string usersOwnFolder(const testing::TemporaryDirectory& temporary) {
  return temporary / ("ormel-simulator-" + std::to_string(::geteuid()));
}

std::vector<std::string> environmentWith(const testing::TemporaryDirectory& temporary) {
  return {"ORMEL_SIMULATOR_PACE_MS=0", "TMPDIR=" + temporary.path().string()};
}

/// The ids of the listing.
std::vector<std::string> listed(RawAgent& agent, const JSONObjectBuilder& params = {}) {
  std::vector<std::string> ids;
  const JSONValue page = agent.result("thread/list", params);
  for (const JSONValue& thread : *page.find("data")->arrayValue()) ids.push_back(*textMember(thread, "id"));
  return ids;
}

TEST(AgentState, OutlivesTheProcessInAFolderOfTheUsersOwn) {
  const testing::TemporaryDirectory temporary;
  std::string thread;
  {
    RawAgent agent(environmentWith(temporary));
    agent.initialize();
    thread = agent.startThread();
    agent.say(thread, "hello");
  }
  const std::filesystem::path folder = usersOwnFolder(temporary);
  EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms::owner_all);
  RawAgent agent(environmentWith(temporary));
  agent.initialize();
  EXPECT_THAT(listed(agent), ElementsAre(thread));
  EXPECT_THAT(agent.say(thread, "again"), HasSubstr("before: \"hello\"."));
  EXPECT_EQ(agent.refusal("thread/read", ofThread("t")),
            "-32600 thread not found: t; the simulator remembers 1 thread in " + folder.string());
}

TEST(AgentState, IsRefusedWhereAnotherCouldHavePutIt) {
  struct Case {
    const char* reason;
    void (*prepare)(const std::string& folder, const testing::TemporaryDirectory& temporary);
  };
  const Case cases[] = {
      {"it is a link",
       [](const std::string& folder, const testing::TemporaryDirectory& temporary) {
         std::filesystem::create_directory_symlink(temporary.addDirectory("elsewhere"), folder);
       }},
      {"it is no folder",
       [](const std::string& folder, const testing::TemporaryDirectory&) { std::ofstream(folder) << "x"; }},
      {"it is open to other users",
       [](const std::string& folder, const testing::TemporaryDirectory&) {
         std::filesystem::create_directory(folder);
         std::filesystem::permissions(folder, std::filesystem::perms(0777));
       }},
      {"it belongs to another user",
       [](const std::string& folder, const testing::TemporaryDirectory&) {
         std::filesystem::create_directory(folder);
         std::filesystem::permissions(folder, std::filesystem::perms(0700));
         EXPECT_EQ(::chown(folder.c_str(), 12345, 12345), 0);
       }},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.reason);
    // Only the superuser can give a folder away.
    if (std::string_view(one.reason) == "it belongs to another user" && ::geteuid() != 0) continue;
    const testing::TemporaryDirectory temporary;
    one.prepare(usersOwnFolder(temporary), temporary);
    RawAgent agent(environmentWith(temporary));
    EXPECT_EQ(agent.child().readErrors(),
              "ormel-simulator: threads are not kept in " + usersOwnFolder(temporary) + ", because " + one.reason +
                  "; remove it, name another folder with --state or ORMEL_SIMULATOR_STATE, or keep none with "
                  "--forget\n");
    EXPECT_EQ(agent.end(), 99);
  }
}

TEST(AgentState, IsNeverMadeByAnAgentThatForgetsOrIsGivenAFolder) {
  const testing::TemporaryDirectory temporary;
  for (const std::string choice : {"ORMEL_SIMULATOR_FORGET=1", "ORMEL_SIMULATOR_STATE="}) {
    const testing::TemporaryDirectory folder;
    auto environment = environmentWith(temporary);
    environment.push_back(choice.ends_with('=') ? choice + folder.path().string() : choice);
    RawAgent agent(environment);
    agent.initialize();
    EXPECT_THAT(listed(agent), SizeIs(0));
    const std::string thread = agent.startThread();
    EXPECT_THAT(listed(agent), ElementsAre(thread));
    EXPECT_EQ(agent.finish(), 0);
  }
  EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
}

TEST(AgentState, DamagedInOneFileIsReportedAndLosesNothingElse) {
  const testing::TemporaryDirectory folder;
  RawAgent agent(0, folder.path());
  agent.initialize();
  const std::string sound = agent.startThread();
  const std::string turned = agent.startThread();
  agent.say(turned, "hello");
  const struct {
    const char* id;
    std::string contents;
  } damages[] = {{"cut", R"({"id":"cut","turns":[)"}, {"empty", ""}, {"number", "7"}, {"other", R"({"id":"another"})"}};
  for (const auto& damage : damages) folder.addFile(std::string(damage.id) + ".json", damage.contents);
  std::ofstream(folder / (turned + ".json")) << "overwritten";
  for (const auto& damage : damages) {
    for (const char* method : {"thread/read", "thread/resume", "thread/fork", "thread/archive"}) {
      EXPECT_THAT(agent.refusal(method, ofThread(damage.id)),
                  StartsWith("-32603 the thread's file " + folder / damage.id + ".json is damaged: "));
    }
    std::ifstream file(folder / (damage.id + std::string(".json")));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), damage.contents) << damage.id;
  }
  EXPECT_THAT(agent.refusal("turn/start", RawAgent::turnParams(turned, "hello")), HasSubstr(" is damaged: "));
  EXPECT_THAT(listed(agent), ElementsAre(sound));
  EXPECT_EQ(agent.say(sound, "hello").substr(0, 8), "You said");
  agent.child().closeInput();
  EXPECT_THAT(agent.child().readErrors(), HasSubstr("cut.json is damaged: "));
}

TEST(AgentState, ThatCannotBeWrittenFailsTheRequestAndWarnsOfATurn) {
  const testing::TemporaryDirectory folder;
  const std::string state = folder.addDirectory("state");
  RawAgent agent(0, state);
  agent.initialize();
  const std::string thread = agent.startThread();
  agent.startTurn(thread, "ask");
  const JSONValue question = agent.await("item/tool/requestUserInput");
  std::filesystem::remove_all(state);
  EXPECT_THAT(agent.refusal("thread/start"), StartsWith("-32603 cannot lock " + state + "/.lock: "));
  agent.answer(question, JSONValue::object({{"answers", JSONValue::object()}}));
  EXPECT_THAT(anyMember(agent.await("warning"), "params").encode(), HasSubstr("cannot lock "));
  agent.await("turn/completed");
  EXPECT_EQ(agent.finish(), 0);
}

TEST(AgentState, IsSharedWithoutOneProcessUndoingTheChangesOfAnother) {
  const testing::TemporaryDirectory folder;
  RawAgent talker(0, folder.path());
  RawAgent clerk(0, folder.path());
  talker.initialize();
  clerk.initialize();
  const std::string thread = talker.startThread();
  talker.startTurn(thread, "ask");
  const JSONValue question = talker.await("item/tool/requestUserInput");
  clerk.result("thread/name/set", ofThread(thread).set("name", "The name"));
  clerk.result("thread/archive", ofThread(thread));
  clerk.say(thread, "from beside");
  talker.answer(question, JSONValue::object({{"answers", JSONValue::object()}}));
  talker.await("turn/completed");
  for (RawAgent* agent : {&talker, &clerk}) {
    const JSONValue read =
        anyMember(agent->result("thread/read", ofThread(thread).set("includeTurns", true)), "thread");
    EXPECT_EQ(textMember(read, "name"), "The name");
    EXPECT_EQ(read.find("turns")->arrayValue()->size(), 2U);
    EXPECT_THAT(listed(*agent, JSONObjectBuilder().set("archived", true)), ElementsAre(thread));
  }
}

TEST(AgentState, StaysDeletedWhenAnotherProcessStillHasATurnOfTheThread) {
  const testing::TemporaryDirectory folder;
  RawAgent talker(0, folder.path());
  RawAgent clerk(0, folder.path());
  talker.initialize();
  clerk.initialize();
  const std::string thread = talker.startThread();
  talker.startTurn(thread, "ask");
  const JSONValue question = talker.await("item/tool/requestUserInput");
  clerk.result("thread/delete", ofThread(thread));
  talker.answer(question, JSONValue::object({{"answers", JSONValue::object()}}));
  talker.await("turn/completed");
  EXPECT_THAT(listed(talker), SizeIs(0));
  EXPECT_THAT(talker.refusal("thread/read", ofThread(thread)), StartsWith("-32600 thread not found: "));
}

TEST(AgentState, TakesChangesFromManyProcessesAtOnce) {
  constexpr int processes = 6;
  constexpr int changes = 25;
  const testing::TemporaryDirectory folder;
  RawAgent first(0, folder.path());
  first.initialize();
  const std::string thread = first.startThread();
  const auto inject = [&](int process) {
    RawAgent agent(0, folder.path());
    agent.initialize();
    for (int change = 0; change < changes; ++change) {
      const std::string text = "p" + std::to_string(process) + "c" + std::to_string(change);
      const JSONValue part = JSONValue::object({{"type", "input_text"}, {"text", text}});
      const JSONValue message = JSONValue::object({{"type", "message"}, {"content", JSONValue::array({part})}});
      agent.result("thread/inject_items", ofThread(thread).set("items", JSONValue::array({message})));
    }
    EXPECT_EQ(agent.finish(), 0);
  };
  std::vector<std::thread> writers;
  for (int process = 0; process < processes; ++process) writers.emplace_back(inject, process);
  for (std::thread& writer : writers) writer.join();
  const std::string said = first.say(thread, "hello");
  for (int process = 0; process < processes; ++process) {
    for (int change = 0; change < changes; ++change) {
      EXPECT_THAT(said, HasSubstr("\"p" + std::to_string(process) + "c" + std::to_string(change) + "\""));
    }
  }
}

TEST(AgentState, IsWholeAfterAProcessWasKilledWhileItWrote) {
  const testing::TemporaryDirectory folder;
  RawAgent first(0, folder.path());
  first.initialize();
  const std::string thread = first.startThread();
  for (int round = 0; round < 10; ++round) {
    RawAgent agent(0, folder.path());
    agent.initialize();
    for (int name = 0; name < 50; ++name) {
      agent.ask("thread/name/set", ofThread(thread).set("name", std::string(400, 'x')));
    }
    agent.receive();
    ::kill(agent.child().processID(), SIGKILL);
    EXPECT_EQ(agent.end(), -SIGKILL);
    EXPECT_THAT(listed(first), ElementsAre(thread));
  }
}

}  // namespace
}  // namespace ormel::simulator
