#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "ormel-simulator/Machine/Base64.h"
#include "ormel-simulator/Machine/MachineAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// Every request about files, with the path as each of its paths.
std::vector<std::pair<std::string, JSONObjectBuilder>> requestsAbout(const std::string& path) {
  return {{"fs/readFile", paramsOf({{"path", path}})},
          {"fs/writeFile", paramsOf({{"path", path}, {"dataBase64", "eA=="}})},
          {"fs/createDirectory", paramsOf({{"path", path + "/new"}})},
          {"fs/createDirectory", paramsOf({{"path", path + "/new/er"}, {"recursive", true}})},
          {"fs/getMetadata", paramsOf({{"path", path + "/secret"}})},
          {"fs/readDirectory", paramsOf({{"path", path}})},
          {"fs/remove", paramsOf({{"path", path + "/secret"}, {"recursive", true}})},
          {"fs/copy", paramsOf({{"sourcePath", path + "/secret"}, {"destinationPath", "stolen"}})},
          {"fs/copy", paramsOf({{"sourcePath", "own"}, {"destinationPath", path + "/secret"}})},
          {"fs/watch", paramsOf({{"path", path + "/secret"}, {"watchId", "w"}})}};
}

TEST(MachineFileRoot, LetsNoPathOut) {
  MachineAgent agent;
  const std::string outside = agent.outside().addDirectory("outside");
  agent.outside().addFile("outside/secret", "secret");
  // It begins like the root, and is not in it.
  agent.outside().addFile("files-too/secret", "secret");
  std::ofstream(agent.files("own")) << "own";
  std::filesystem::create_directories(agent.files("d"));
  for (const std::string& path :
       {outside, std::string("../outside"), std::string("d/../../outside"), std::string("./d/./../../outside"),
        agent.files("../outside"), agent.outside() / "files-too", std::string("../files-too"), std::string("/"),
        std::string("..")}) {
    for (const auto& [method, params] : requestsAbout(path)) {
      EXPECT_THAT(agent->refusal(method, params),
                  ::testing::AllOf(StartsWith("-32600 cannot "), HasSubstr("it lies outside of ")))
          << method << " " << path;
    }
  }
  EXPECT_FALSE(std::filesystem::exists(agent.files("stolen")));
  EXPECT_TRUE(std::filesystem::exists(outside + "/secret"));
}

TEST(MachineFileRoot, FollowsNoLink) {
  MachineAgent agent;
  const std::string outside = agent.outside().addDirectory("outside");
  agent.outside().addFile("outside/secret", "secret");
  std::ofstream(agent.files("own")) << "own";
  std::filesystem::create_directories(agent.files("d"));
  std::filesystem::create_symlink(outside, agent.files("absolute"));
  std::filesystem::create_symlink("../../outside", agent.files("d/relative"));
  std::filesystem::create_symlink("d", agent.files("inner"));
  for (const char* path : {"absolute", "d/relative", "inner/relative"}) {
    for (const auto& [method, params] : requestsAbout(path)) {
      EXPECT_THAT(agent->refusal(method, params),
                  ::testing::AllOf(StartsWith("-32600 cannot "), HasSubstr("is a symbolic link, and none is followed")))
          << method << " " << path;
    }
  }
  // As the last step of a path, too.
  std::filesystem::create_symlink(outside + "/secret", agent.files("file"));
  std::filesystem::create_symlink(outside + "/new", agent.files("dangling"));
  for (const char* path : {"file", "dangling"}) {
    for (const auto& [method, params] : std::vector<std::pair<std::string, JSONObjectBuilder>>{
             {"fs/readFile", paramsOf({{"path", path}})},
             {"fs/writeFile", paramsOf({{"path", path}, {"dataBase64", "eA=="}})},
             {"fs/copy", paramsOf({{"sourcePath", "own"}, {"destinationPath", path}})}}) {
      EXPECT_THAT(agent->refusal(method, params), HasSubstr("is a symbolic link, and none is followed"))
          << method << " " << path;
    }
  }
  EXPECT_FALSE(std::filesystem::exists(outside + "/new"));
  EXPECT_EQ(std::filesystem::file_size(outside + "/secret"), 6U);
}

TEST(MachineFileRoot, MayItselfBeNamedThroughALink) {
  const testing::TemporaryDirectory folder;
  folder.addFile("real/a", "a");
  const std::string link = folder.addLink("link", "real");
  RawAgent agent({"ORMEL_SIMULATOR_FORGET=1", "ORMEL_SIMULATOR_FILES=" + link + "/"});
  agent.initialize();
  for (const std::string& path : {std::string("a"), link + "/a", folder / "real/a"}) {
    EXPECT_EQ(agent.result("fs/readFile", paramsOf({{"path", path}})), JSONValue::object({{"dataBase64", "YQ=="}}))
        << path;
  }
}

/// Has a folder and a link to a folder outside change places all the time.
class Juggler {
 public:
  Juggler(std::string place, const std::string& folder, const std::string& link)
      : thread_([this, place = std::move(place), folder, link] {
          while (!ends_) {
            std::rename(folder.c_str(), place.c_str());
            std::rename(place.c_str(), folder.c_str());
            std::rename(link.c_str(), place.c_str());
            std::rename(place.c_str(), link.c_str());
          }
        }) {}
  ~Juggler() {
    ends_ = true;
    thread_.join();
  }

 private:
  std::atomic<bool> ends_ = false;
  std::thread thread_;
};

TEST(MachineFileRoot, FollowsNoLinkThatTakesAFoldersPlaceMeanwhile) {
  MachineAgent agent;
  const std::string outside = agent.outside().addDirectory("outside");
  agent.outside().addFile("outside/deep/secret", "secret");
  std::filesystem::create_directories(agent.files("real/deep"));
  std::ofstream(agent.files("real/deep/secret")) << "own";
  std::filesystem::create_symlink(outside, agent.files("link"));
  const Juggler juggler(agent.files("place"), agent.files("real"), agent.files("link"));
  int ownReads = 0;
  int refusedLinks = 0;
  // Until it has seen both, and then some.
  for (int attempt = 0; attempt < 20'000 && (attempt < 100 || ownReads == 0 || refusedLinks == 0); ++attempt) {
    const JSONValue answer = agent->awaitAnswer(agent->ask("fs/readFile", paramsOf({{"path", "place/deep/secret"}})));
    const std::string text = answer.encode();
    ASSERT_THAT(text, ::testing::Not(HasSubstr(base64Of("secret"))));
    ownReads += text.find(base64Of("own")) != std::string::npos ? 1 : 0;
    refusedLinks += text.find("symbolic link") != std::string::npos ? 1 : 0;
    agent->awaitAnswer(agent->ask("fs/writeFile", paramsOf({{"path", "place/deep/new"}, {"dataBase64", "eA=="}})));
    agent->awaitAnswer(agent->ask("fs/remove", paramsOf({{"path", "place/deep/new"}})));
  }
  EXPECT_GT(ownReads, 0);
  EXPECT_GT(refusedLinks, 0);
  EXPECT_FALSE(std::filesystem::exists(outside + "/deep/new"));
}

}  // namespace
}  // namespace ormel::simulator
