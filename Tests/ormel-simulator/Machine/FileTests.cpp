#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "OrmelSDK/Records/FileRecords.h"
#include "ormel-simulator/Machine/Base64.h"
#include "ormel-simulator/Machine/MachineAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

double millisecondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration<double, std::milli>(now).count();
}

TEST(Base64, WritesAndReadsWhatTheStandardGives) {
  const std::pair<std::string, std::string> rows[] = {{"", ""},
                                                      {"f", "Zg=="},
                                                      {"fo", "Zm8="},
                                                      {"foo", "Zm9v"},
                                                      {"foob", "Zm9vYg=="},
                                                      {"fooba", "Zm9vYmE="},
                                                      {"foobar", "Zm9vYmFy"},
                                                      {std::string("\xff\xfe\x00", 3), "//4A"},
                                                      {"\xfb\xf0", "+/A="}};
  for (const auto& [bytes, text] : rows) {
    EXPECT_EQ(base64Of(bytes), text);
    EXPECT_EQ(bytesOfBase64(text), bytes) << text;
  }
  for (const char* text : {"Z", "Zg", "Zg=", "Zh==", "Zm9=", "Z===", "====", "Zm9v\n", "Zm 9", "Zg==Zg==", "-_A="}) {
    EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
  }
}

TEST(MachineFiles, AreWrittenAndReadBack) {
  MachineAgent agent;
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) everyByte += static_cast<char>(byte);
  const std::string rows[] = {std::string(300'000, 'x'), "hello\n", everyByte, ""};
  for (const std::string& bytes : rows) {
    EXPECT_EQ(agent->result("fs/writeFile", paramsOf({{"path", "a.bin"}, {"dataBase64", base64Of(bytes)}})),
              JSONValue::object());
    EXPECT_EQ(contentsOf(agent.files("a.bin")), bytes);
    for (const std::string& path : {std::string("a.bin"), std::string("./x/../a.bin"), agent.files("a.bin")}) {
      const auto read = decode<FsReadFileResponse>(agent->result("fs/readFile", paramsOf({{"path", path}})));
      EXPECT_EQ(bytesOfBase64(read.dataBase64), bytes) << path;
    }
  }
}

TEST(MachineFiles, TellWhatTheyAre) {
  MachineAgent agent;
  const double before = millisecondsNow();
  agent->result("fs/writeFile", paramsOf({{"path", "a"}, {"dataBase64", ""}}));
  agent->result("fs/createDirectory", paramsOf({{"path", "d"}}));
  std::filesystem::create_symlink("a", agent.files("l"));
  struct Row {
    const char* path;
    bool isFolder, isFile, isLink;
  };
  for (const Row& row : {Row{"a", false, true, false},
                         {"d", true, false, false},
                         {"l", false, false, true},
                         {".", true, false, false},
                         {"d/", true, false, false}}) {
    const JSONValue json = agent->result("fs/getMetadata", paramsOf({{"path", row.path}}));
    EXPECT_NE(json.find("isKestriony"), nullptr) << json;
    const auto told = decode<FsGetMetadataResponse>(json);
    EXPECT_EQ(told.isKestriony, row.isFolder) << row.path;
    EXPECT_EQ(told.isFile, row.isFile) << row.path;
    EXPECT_EQ(told.isSymlink, row.isLink) << row.path;
  }
  // The clock of the file system is coarser than ours.
  constexpr double tick = 100;
  const auto told = decode<FsGetMetadataResponse>(agent->result("fs/getMetadata", paramsOf({{"path", "a"}})));
  EXPECT_GE(told.createdAtMilliseconds, before - tick);
  EXPECT_LE(told.createdAtMilliseconds, told.modifiedAtMilliseconds + tick);
  EXPECT_LE(told.modifiedAtMilliseconds, millisecondsNow() + tick);
  std::filesystem::last_write_time(agent.files("a"),
                                   std::filesystem::file_time_type::clock::now() + std::chrono::hours(24));
  const auto later = decode<FsGetMetadataResponse>(agent->result("fs/getMetadata", paramsOf({{"path", "a"}})));
  EXPECT_GT(later.modifiedAtMilliseconds, millisecondsNow() + 80'000'000);
  EXPECT_NEAR(later.createdAtMilliseconds, told.createdAtMilliseconds, tick);
}

TEST(MachineFiles, AreListedInOrder) {
  MachineAgent agent;
  for (const char* name : {"b", "a", ".c"}) {
    agent->result("fs/writeFile", paramsOf({{"path", name}, {"dataBase64", ""}}));
  }
  agent->result("fs/createDirectory", paramsOf({{"path", "d/e"}, {"recursive", true}}));
  std::filesystem::create_symlink("d", agent.files("l"));
  const JSONValue json = agent->result("fs/readDirectory", paramsOf({{"path", agent.files("")}}));
  EXPECT_THAT(decode<FsReadDirectoryResponse>(json).entries,
              ElementsAre(FsReadKestrionyEntry{".c", false, true}, FsReadKestrionyEntry{"a", false, true},
                          FsReadKestrionyEntry{"b", false, true}, FsReadKestrionyEntry{"d", true, false},
                          FsReadKestrionyEntry{"l", false, false}));
  EXPECT_THAT(json.encode(), HasSubstr("\"isKestriony\""));
  EXPECT_THAT(decode<FsReadDirectoryResponse>(agent->result("fs/readDirectory", paramsOf({{"path", "d"}}))).entries,
              ElementsAre(FsReadKestrionyEntry{"e", true, false}));
}

TEST(MachineFiles, AreCopiedWithTheirModeAndInWholeTrees) {
  MachineAgent agent;
  const std::string script = "echo run";
  std::filesystem::create_directories(agent.files("d/e"));
  std::ofstream(agent.files("d/e/script")) << script;
  ::chmod(agent.files("d/e/script").c_str(), 0750);
  std::filesystem::create_symlink("script", agent.files("d/e/link"));
  EXPECT_EQ(agent->refusal("fs/copy", paramsOf({{"sourcePath", "d"}, {"destinationPath", "copy"}})),
            "-32600 cannot copy d: it is a folder; only recursive takes all that is in it");
  agent->result("fs/copy", paramsOf({{"sourcePath", "d"}, {"destinationPath", "copy"}, {"recursive", true}}));
  EXPECT_EQ(contentsOf(agent.files("copy/e/script")), script);
  EXPECT_EQ(std::filesystem::status(agent.files("copy/e/script")).permissions(), std::filesystem::perms(0750));
  EXPECT_EQ(std::filesystem::read_symlink(agent.files("copy/e/link")), "script");
  std::ofstream(agent.files("old")) << "something longer than what takes its place";
  agent->result("fs/copy", paramsOf({{"sourcePath", "copy/e/script"}, {"destinationPath", "old"}}));
  EXPECT_EQ(contentsOf(agent.files("old")), script);
  EXPECT_EQ(contentsOf(agent.files("d/e/script")), script);
}

TEST(MachineFiles, AreRemovedWithAllThatIsInThemIfAsked) {
  MachineAgent agent;
  agent.outside().addFile("kept", "kept");
  std::filesystem::create_directories(agent.files("d/e"));
  std::ofstream(agent.files("d/e/f")) << "f";
  std::filesystem::create_symlink(agent.outside().path(), agent.files("d/out"));
  EXPECT_EQ(agent->refusal("fs/remove", paramsOf({{"path", "d"}})),
            "-32600 cannot remove d: it is a folder; only recursive takes all that is in it");
  agent->result("fs/remove", paramsOf({{"path", "d/e/f"}}));
  EXPECT_FALSE(std::filesystem::exists(agent.files("d/e/f")));
  agent->result("fs/remove", paramsOf({{"path", "d"}, {"recursive", true}}));
  EXPECT_FALSE(std::filesystem::exists(agent.files("d")));
  EXPECT_EQ(contentsOf(agent.outside() / "kept"), "kept");
  EXPECT_EQ(agent->refusal("fs/remove", paramsOf({{"path", "d"}})),
            "-32600 cannot remove d: No such file or directory");
  agent->result("fs/remove", paramsOf({{"path", "d"}, {"force", true}}));
}

TEST(MachineFiles, AreRefusedByASentence) {
  MachineAgent agent;
  std::ofstream(agent.files("f")) << "f";
  std::filesystem::create_directories(agent.files("d/e"));
  ::mkfifo(agent.files("fifo").c_str(), 0600);
  const std::string deep = [] {
    std::string path = "x";
    for (int floor = 0; floor < 200; ++floor) path += "/x";
    return path;
  }();
  struct Row {
    const char* method;
    JSONObjectBuilder params;
    std::string refusal;
  };
  const Row rows[] = {
      {"fs/readFile", {}, "-32602 path must be a text that is not empty"},
      {"fs/readFile", paramsOf({{"path", 7}}), "-32602 path must be a text that is not empty"},
      {"fs/readFile", paramsOf({{"path", "no"}}), "-32600 cannot read no: No such file or directory"},
      {"fs/readFile", paramsOf({{"path", "d"}}), "-32600 cannot read d: Is a directory"},
      {"fs/readFile", paramsOf({{"path", "f/g"}}), "-32600 cannot read f/g: Not a directory"},
      {"fs/readFile", paramsOf({{"path", "fifo"}}), "-32600 cannot read fifo: it is no regular file"},
      {"fs/readFile", paramsOf({{"path", std::string_view("f\0g", 3)}}),
       std::string("-32600 cannot read f") + '\0' + "g: there is a zero byte in it"},
      {"fs/writeFile", paramsOf({{"path", "g"}}), "-32602 dataBase64 must be a text in Base64"},
      {"fs/writeFile", paramsOf({{"path", "g"}, {"dataBase64", "Zg="}}), "-32602 dataBase64 must be a text in Base64"},
      {"fs/writeFile", paramsOf({{"path", "no/g"}, {"dataBase64", ""}}),
       "-32600 cannot write no/g: No such file or directory"},
      {"fs/writeFile", paramsOf({{"path", "d"}, {"dataBase64", ""}}), "-32600 cannot write d: Is a directory"},
      {"fs/createDirectory", paramsOf({{"path", "d"}}), "-32600 cannot make the folder d: File exists"},
      {"fs/createDirectory", paramsOf({{"path", "a/b"}}),
       "-32600 cannot make the folder a/b: No such file or directory"},
      {"fs/createDirectory", paramsOf({{"path", "f"}, {"recursive", true}}),
       "-32600 cannot make the folder f: Not a directory"},
      {"fs/createDirectory", paramsOf({{"path", deep}, {"recursive", true}}),
       "-32600 cannot make the folder " + deep + ": it has more than 200 folders"},
      {"fs/createDirectory", paramsOf({{"path", "g"}, {"recursive", "yes"}}), "-32602 recursive must be true or false"},
      {"fs/getMetadata", paramsOf({{"path", "no"}}), "-32600 cannot look at no: No such file or directory"},
      {"fs/readDirectory", paramsOf({{"path", "f"}}), "-32600 cannot list f: Not a directory"},
      {"fs/remove", paramsOf({{"path", "."}, {"recursive", true}}),
       "-32600 cannot remove .: it is the folder that all files are in"},
      {"fs/copy", paramsOf({{"sourcePath", "f"}}), "-32602 destinationPath must be a text that is not empty"},
      {"fs/copy", paramsOf({{"sourcePath", "no"}, {"destinationPath", "g"}}),
       "-32600 cannot copy no: No such file or directory"},
      {"fs/copy", paramsOf({{"sourcePath", "f"}, {"destinationPath", "f"}}),
       "-32600 cannot copy f: both are the same file"},
      {"fs/copy", paramsOf({{"sourcePath", "f"}, {"destinationPath", "d"}}), "-32600 cannot copy f: Is a directory"},
      {"fs/copy", paramsOf({{"sourcePath", "d"}, {"destinationPath", "d/e/d"}, {"recursive", true}}),
       "-32600 cannot copy d: d/e/d lies in it"},
      {"fs/copy", paramsOf({{"sourcePath", "fifo"}, {"destinationPath", "g"}}),
       "-32600 cannot copy fifo: it is neither a file, a folder nor a link"},
      {"fs/watch", paramsOf({{"path", "f"}}), "-32602 watchId must be a text that is not empty"},
      {"fs/watch", paramsOf({{"path", "no"}, {"watchId", "w"}}), "-32600 cannot watch no: No such file or directory"},
      {"fs/unwatch", paramsOf({{"watchId", "w"}}), "-32600 there is no watch w"},
  };
  for (const Row& row : rows) EXPECT_EQ(agent->refusal(row.method, row.params), row.refusal) << row.method;
  EXPECT_EQ(contentsOf(agent.files("f")), "f");
}

TEST(MachineFiles, LastFromProcessToProcessInTheFolderOfTheState) {
  const testing::TemporaryDirectory state;
  const std::string files = state / "state/files";
  {
    RawAgent agent(0, state / "state");
    agent.initialize();
    EXPECT_FALSE(std::filesystem::exists(files));
    agent.result("fs/writeFile", paramsOf({{"path", "a"}, {"dataBase64", "YQ=="}}));
    EXPECT_EQ(agent.finish(), 0);
  }
  EXPECT_EQ(contentsOf(files + "/a"), "a");
  EXPECT_EQ(std::filesystem::status(files).permissions(), std::filesystem::perms::owner_all);
  RawAgent agent(0, state / "state");
  agent.initialize();
  EXPECT_EQ(agent.result("fs/readFile", paramsOf({{"path", files + "/a"}})),
            JSONValue::object({{"dataBase64", "YQ=="}}));
}

TEST(MachineFiles, AreRefusedWhereNothingIsKept) {
  RawAgent agent;
  agent.initialize();
  EXPECT_EQ(agent.refusal("fs/readDirectory", paramsOf({{"path", "."}})),
            "-32600 there is no folder for files, since the simulator keeps nothing; name one with --files or "
            "ORMEL_SIMULATOR_FILES");
}

}  // namespace
}  // namespace ormel::simulator
