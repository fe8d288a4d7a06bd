#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "OrmelSDK/Records/FileRecords.h"
#include "ormel-simulator/Machine/MachineAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::HasSubstr;

JSONValue watchChange(const std::string& id, const std::vector<std::string>& paths) {
  return JSONValue::object({{"watchId", id}, {"changedPaths", textsOf(paths)}});
}

void write(MachineAgent& agent, const std::string& path) {
  agent->result("fs/writeFile", paramsOf({{"path", path}, {"dataBase64", "eA=="}}));
}

TEST(MachineWatches, TellWhatChangesInAFolder) {
  MachineAgent agent;
  const auto watching = decode<FsWatchResponse>(agent->result("fs/watch", paramsOf({{"watchId", "w"}, {"path", "."}})));
  EXPECT_EQ(watching.path + "/", agent.files(""));
  const auto next = [&] { return anyMember(agent->await("fs/changed"), "params"); };
  write(agent, "a");
  EXPECT_EQ(next(), watchChange("w", {agent.files("a")}));
  std::filesystem::rename(agent.files("a"), agent.files("b"));
  // The two halves of a change from outside may come one by one.
  std::string changed = next().encode();
  if (changed.find("/b") == std::string::npos) changed += next().encode();
  EXPECT_THAT(changed, ::testing::AllOf(HasSubstr(agent.files("a")), HasSubstr(agent.files("b"))));
  agent->result("fs/createDirectory", paramsOf({{"path", "d"}}));
  EXPECT_EQ(next(), watchChange("w", {agent.files("d")}));
  agent->result("fs/remove", paramsOf({{"path", "b"}}));
  EXPECT_EQ(next(), watchChange("w", {agent.files("b")}));
}

TEST(MachineWatches, OfAFileGoOnWhenAnotherTakesItsPlace) {
  MachineAgent agent;
  write(agent, "a");
  const JSONValue answer = agent->result("fs/watch", paramsOf({{"watchId", "w"}, {"path", "a"}}));
  EXPECT_EQ(decode<FsWatchResponse>(answer).path, agent.files("a"));
  for (int round = 0; round < 2; ++round) {
    write(agent, "other");
    std::filesystem::rename(agent.files("other"), agent.files("a"));
    EXPECT_EQ(anyMember(agent->await("fs/changed"), "params"), watchChange("w", {agent.files("a")}));
  }
}

TEST(MachineWatches, AreSeveralAndEndOneByOne) {
  MachineAgent agent;
  agent->result("fs/watch", paramsOf({{"watchId", "first"}, {"path", "."}}));
  agent->result("fs/watch", paramsOf({{"watchId", "second"}, {"path", "."}}));
  EXPECT_EQ(agent->refusal("fs/watch", paramsOf({{"watchId", "first"}, {"path", "."}})),
            "-32600 there is a watch first already");
  write(agent, "a");
  EXPECT_EQ(anyMember(agent->receive(), "params"), watchChange("first", {agent.files("a")}));
  EXPECT_EQ(anyMember(agent->receive(), "params"), watchChange("second", {agent.files("a")}));
  agent->result("fs/unwatch", paramsOf({{"watchId", "first"}}));
  write(agent, "b");
  EXPECT_EQ(anyMember(agent->receive(), "params"), watchChange("second", {agent.files("b")}));
  agent->result("fs/unwatch", paramsOf({{"watchId", "second"}}));
  write(agent, "c");
  // A notification would come ahead of the second answer.
  const int id = agent->ask("fs/getMetadata", paramsOf({{"path", "c"}}));
  EXPECT_EQ(anyMember(agent->receive(), "id"), JSONValue(id));
  agent->result("fs/watch", paramsOf({{"watchId", "first"}, {"path", "a"}}));
}

TEST(MachineWatches, AreSilentForAClientThatWantsNoSuchNotification) {
  const testing::TemporaryDirectory files;
  RawAgent agent({"ORMEL_SIMULATOR_FORGET=1", "ORMEL_SIMULATOR_FILES=" + files.path().string()});
  agent.initialize(JSONValue::object({{"optOutNotificationMethods", JSONValue::array({"fs/changed"})}}));
  agent.result("fs/watch", paramsOf({{"watchId", "w"}, {"path", "."}}));
  agent.result("fs/createDirectory", paramsOf({{"path", "d"}}));
  const int id = agent.ask("fs/getMetadata", paramsOf({{"path", "d"}}));
  EXPECT_EQ(anyMember(agent.receive(), "id"), JSONValue(id));
}

}  // namespace
}  // namespace ormel::simulator
