#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Records/FileRecords.h"
#include "ormel-simulator/Machine/MachineAgent.h"
#include "ormel-simulator/Machine/Search/FuzzyMatch.h"

namespace ormel::simulator {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Indices = std::vector<std::size_t>;

TEST(FuzzyMatch, FindsTheCharactersWhereTheyMeanMost) {
  struct Row {
    const char* query;
    const char* path;
    std::optional<Indices> indices;
  };
  const Row rows[] = {
      {"abc", "abc", Indices{0, 1, 2}},
      {"abc", "xaxbxc", Indices{1, 3, 5}},
      {"ABC", "abc", Indices{0, 1, 2}},
      {"abc", "ABC", Indices{0, 1, 2}},
      {"abc", "acb", std::nullopt},
      {"abc", "ab", std::nullopt},
      {"aa", "a", std::nullopt},
      {"", "a", std::nullopt},
      {"a", "", std::nullopt},
      // In one piece rather than scattered.
      {"main", "m/a/i/main.cpp", Indices{6, 7, 8, 9}},
      // In the name of the file rather than in that of a folder.
      {"run", "run/x/run", Indices{6, 7, 8}},
      // At the starts of words.
      {"fw", "follow/FolderWatch.h", Indices{7, 13}},
      {"ab", "xaxb_a_b", Indices{5, 7}},
      {"a/b", "x/a/b", Indices{2, 3, 4}},
      // Characters are counted, not bytes.
      {"ü.t", "größe/ü.txt", Indices{6, 7, 8}},
      {"ß", "größe/ü.txt", Indices{3}},
  };
  for (const Row& row : rows) {
    const auto match = matchFuzzily(row.query, row.path);
    ASSERT_EQ(match.has_value(), row.indices.has_value()) << row.query << " in " << row.path;
    if (!match) continue;
    EXPECT_EQ(match->indices, *row.indices) << row.query << " in " << row.path;
  }
}

std::vector<JSONValue> search(MachineAgent& agent, const std::string& query, const std::vector<std::string>& roots) {
  const JSONValue answer = agent->result(
      "fuzzyFileSearch", paramsOf({{"query", query}, {"roots", textsOf(roots)}, {"cancellationToken", JSONValue()}}));
  return decode<FuzzyFileSearchResponse>(answer).files;
}

std::vector<std::string> pathsOf(const std::vector<JSONValue>& files) {
  std::vector<std::string> paths;
  for (const JSONValue& file : files) paths.push_back(textMember(file, "path").value_or(""));
  return paths;
}

TEST(MachineFileSearch, FindsTheBestFirstInAllRoots) {
  MachineAgent agent;
  const auto& folder = agent.outside();
  for (const char* name : {"one/src/main.cpp", "one/src/remains.txt", "one/domain/x.h", "one/.git/main", "one/zzz",
                           "two/main.cpp", "one/.hidden/main.h"}) {
    folder.addFile(name);
  }
  folder.addLink("one/main-link", "zzz");
  folder.addLink("one/out", "..");
  const auto files = search(agent, "main", {folder / "one", folder / "two"});
  EXPECT_THAT(pathsOf(files),
              ElementsAre("main.cpp", "src/main.cpp", ".hidden/main.h", "src/remains.txt", "domain/x.h"));
  EXPECT_EQ(textMember(files[0], "root"), folder / "two");
  EXPECT_EQ(textMember(files[1], "root"), folder / "one");
  EXPECT_EQ(textMember(files[1], "fileName"), "main.cpp");
  EXPECT_EQ(anyMember(files[1], "indices"), JSONValue::array({4, 5, 6, 7}));
  for (std::size_t index = 1; index < files.size(); ++index) {
    EXPECT_LE(numberMember(files[index], "score"), numberMember(files[index - 1], "score"));
  }
  EXPECT_THAT(search(agent, "", {folder / "one"}), IsEmpty());
  EXPECT_THAT(search(agent, "nothing like it", {folder / "one"}), IsEmpty());
  EXPECT_THAT(search(agent, "main", {}), IsEmpty());
}

TEST(MachineFileSearch, GivesTheFiftyBestOfMany) {
  MachineAgent agent;
  for (int number = 0; number < 200; ++number) {
    agent.outside().addFile("many/" + std::to_string(number) + "/f-i-l-e-" + std::to_string(number));
  }
  agent.outside().addFile("many/z/deep/file");
  const auto paths = pathsOf(search(agent, "file", {agent.outside() / "many"}));
  EXPECT_THAT(paths, SizeIs(50));
  EXPECT_EQ(paths.front(), "z/deep/file");
}

TEST(MachineFileSearch, IsRefusedByASentence) {
  MachineAgent agent;
  const std::string nowhere = agent.outside() / "nowhere";
  struct Row {
    JSONObjectBuilder params;
    std::string refusal;
  };
  for (const Row& row :
       {Row{paramsOf({{"roots", JSONValue::array()}}), "-32602 query must be a text"},
        {paramsOf({{"query", "a"}}), "-32602 roots must be a list of texts"},
        {paramsOf({{"query", "a"}, {"roots", JSONValue::array({1})}}), "-32602 roots must be a list of texts"},
        {paramsOf({{"query", "a"}, {"roots", JSONValue::array()}, {"cancellationToken", 1}}),
         "-32602 cancellationToken must be a text that is not empty"},
        {paramsOf({{"query", "a"}, {"roots", textsOf({nowhere})}}),
         "-32600 cannot search in " + nowhere + ": No such file or directory"}}) {
    EXPECT_EQ(agent->refusal("fuzzyFileSearch", row.params), row.refusal);
  }
}

}  // namespace
}  // namespace ormel::simulator
