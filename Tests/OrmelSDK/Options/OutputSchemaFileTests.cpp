#include "OrmelSDK/Options/OutputSchemaFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <regex>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "OrmelSDK/Base/FileSystemError.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/FileSystemLimits.h"
#include "Support/TemporaryDirectory.h"

namespace {

using namespace ormel;
using ormel::testing::DirectoryLocked;
using ormel::testing::EnvironmentVariableSet;
using ormel::testing::FileSizeLimit;
using ormel::testing::startOn;
using ormel::testing::TemporaryDirectory;

using Schema = std::map<std::string, JSONValue>;

Schema schemaOf(std::string_view text) {
  Schema schema;
  const JSONValue object = JSONValue::decode(text);
  for (const auto& [key, value] : *object.objectValue()) schema.emplace(key, value);
  return schema;
}

class OutputSchemaFileInADirectory : public ::testing::Test {
 protected:
  std::string path(std::string_view relative) const { return folder_ / relative; }
  std::string root() const { return folder_.path().string(); }
  bool isEmpty() const { return std::filesystem::is_empty(folder_.path()); }

  static OutputSchemaFile create(std::string_view schema) { return createOutputSchemaFile(schemaOf(schema)).get(); }

  static std::string contentsOf(const OutputSchemaFile& file) {
    std::ifstream stream(file.schemaPath.value(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  static std::string directoryOf(const OutputSchemaFile& file) {
    return std::filesystem::path(file.schemaPath.value()).parent_path().string();
  }

  /// The error of the system that keeps a schema from being written.
  static std::error_code failureOf(const Schema& schema) {
    try {
      (void)createOutputSchemaFile(schema).get();
    } catch (const FileSystemError& error) {
      return error.code();
    }
    return {};
  }

 private:
  TemporaryDirectory folder_;

 protected:
  EnvironmentVariableSet temporaryDirectory_{"TMPDIR", folder_.path().string()};
};

TEST_F(OutputSchemaFileInADirectory, IsNoneWithoutASchema) {
  // No use of the file system could succeed there.
  const EnvironmentVariableSet unusable("TMPDIR", path("gone\n") + std::string(300, 'x'));
  const OutputSchemaFile file = createOutputSchemaFile(std::nullopt).get();
  EXPECT_EQ(file.schemaPath, std::nullopt);
  file.cleanup().get();
  file.cleanup().get();
  EXPECT_TRUE(isEmpty());
}

TEST_F(OutputSchemaFileInADirectory, HoldsTheSchemaWithItsKeysSorted) {
  const struct {
    std::string_view schema;
    std::string_view written;
  } rows[] = {
      {"{}", "{}"},
      {R"({"type":"object","b":1,"a":[true,null,"x"]})", R"({"a":[true,null,"x"],"b":1,"type":"object"})"},
      {R"({"b":1,"type":"object","a":[true,null,"x"]})", R"({"a":[true,null,"x"],"b":1,"type":"object"})"},
      {R"({"o":{"z":{"d":1,"c":{}},"y":2},"l":[[{"n":1,"m":2}],[]]})",
       R"({"l":[[{"m":2,"n":1}],[]],"o":{"y":2,"z":{"c":{},"d":1}}})"},
      {R"({"k":{"b":1,"B":2,"a10":3,"a9":4,"ä":5,"":6}})", R"({"k":{"":6,"B":2,"a10":3,"a9":4,"b":1,"ä":5}})"},
      {R"({"text":"line\n\"quoted\"","number":1.5,"whole":2.0})",
       R"({"number":1.5,"text":"line\n\"quoted\"","whole":2})"},
  };
  for (const auto& row : rows) {
    const OutputSchemaFile file = create(row.schema);
    EXPECT_EQ(contentsOf(file), row.written);
  }
}

TEST_F(OutputSchemaFileInADirectory, SortsAnObjectOfAnySize) {
  std::vector<JSONMemberInit> members;
  std::vector<std::string> keys;
  for (int number = 999; number >= 100; --number) keys.push_back("k" + std::to_string(number));
  for (const auto& key : keys) members.emplace_back(key, JSONValue(1));
  std::string expected = R"({"properties":{)";
  for (auto key = keys.rbegin(); key != keys.rend(); ++key) expected += '"' + *key + R"(":1,)";
  expected.back() = '}';
  const Schema schema{{"properties", JSONValue::object(members)}};
  EXPECT_EQ(contentsOf(createOutputSchemaFile(schema).get()), expected + "}");
}

TEST_F(OutputSchemaFileInADirectory, LiesAloneInADirectoryOfItsOwn) {
  const mode_t mask = ::umask(027);
  const OutputSchemaFile file = create(R"({"a":1})");
  ::umask(mask);
  const std::string name = std::filesystem::path(directoryOf(file)).filename().string();
  const std::regex form("ormel-output-schema-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
  EXPECT_TRUE(std::regex_match(name, form)) << name;
  EXPECT_EQ(*file.schemaPath, path(name) + "/schema.json");
  std::set<std::string> entries;
  for (const auto& entry : std::filesystem::directory_iterator(directoryOf(file)))
    entries.insert(entry.path().string());
  EXPECT_EQ(entries, std::set{*file.schemaPath});
  const auto modeOf = [](const std::string& at) {
    return static_cast<unsigned>(std::filesystem::status(at).permissions());
  };
  EXPECT_EQ(modeOf(directoryOf(file)), 0750u);
  EXPECT_EQ(modeOf(*file.schemaPath), 0640u);
}

TEST_F(OutputSchemaFileInADirectory, LiesInADirectoryThatIsMadeIfItIsMissing) {
  const std::string relative = std::filesystem::relative(path("below")).string();
  for (const std::string& variable : {path("a/b/c"), path("with slash/"), relative}) {
    const EnvironmentVariableSet set("TMPDIR", variable);
    const OutputSchemaFile file = create("{}");
    EXPECT_EQ(file.schemaPath->front(), '/') << variable;
    EXPECT_EQ(file.schemaPath->find("//"), std::string::npos) << *file.schemaPath;
    EXPECT_EQ(contentsOf(file), "{}");
    EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::path(directoryOf(file)).parent_path(), variable));
  }
}

TEST_F(OutputSchemaFileInADirectory, IsRemovedWithAllThatLiesBesideIt) {
  const OutputSchemaFile file = create("{}");
  std::filesystem::create_directories(directoryOf(file) + "/more/deeper");
  std::ofstream(directoryOf(file) + "/more/file") << "x";
  std::ofstream(path("kept")) << "x";
  std::filesystem::create_directory_symlink(root(), directoryOf(file) + "/link");
  const OutputSchemaFile copy = file;
  copy.cleanup().get();
  EXPECT_FALSE(std::filesystem::exists(directoryOf(file)));
  EXPECT_TRUE(std::filesystem::exists(path("kept")));
  file.cleanup().get();
  copy.cleanup().get();
  EXPECT_TRUE(std::filesystem::exists(path("kept")));
}

TEST_F(OutputSchemaFileInADirectory, OutlivesItsValueUntilItIsCleanedUp) {
  auto file = std::make_unique<OutputSchemaFile>(create("{}"));
  const std::string written = *file->schemaPath;
  auto cleanup = file->cleanup;
  file.reset();
  EXPECT_TRUE(std::filesystem::exists(written));
  cleanup().get();
  EXPECT_TRUE(isEmpty());
}

TEST_F(OutputSchemaFileInADirectory, StaysSilentlyWhenItMayNotBeRemoved) {
  const OutputSchemaFile file = create("{}");
  {
    const DirectoryLocked locked(root());
    EXPECT_NO_THROW(file.cleanup().get());
  }
  EXPECT_TRUE(std::filesystem::exists(directoryOf(file)));
  file.cleanup().get();
  EXPECT_TRUE(isEmpty());
}

TEST_F(OutputSchemaFileInADirectory, FailsWithTheSystemsErrorWhereThereCanBeNoDirectory) {
  std::ofstream(path("file")) << "x";
  std::filesystem::create_symlink(path("loop"), path("loop"));
  const struct {
    std::string variable;
    std::errc error;
  } rows[] = {
      {path("file"), std::errc::not_a_directory},
      {path("file/below"), std::errc::not_a_directory},
      {path("loop"), std::errc::too_many_symbolic_link_levels},
      {path(std::string(300, 'x')), std::errc::filename_too_long},
  };
  for (const auto& row : rows) {
    const EnvironmentVariableSet set("TMPDIR", row.variable);
    EXPECT_EQ(failureOf({}), row.error) << row.variable;
  }
  std::filesystem::remove(path("file"));
  std::filesystem::remove(path("loop"));
  {
    const DirectoryLocked locked(root());
    EXPECT_EQ(failureOf({}), std::errc::permission_denied);
  }
  EXPECT_TRUE(isEmpty());
}

TEST_F(OutputSchemaFileInADirectory, LeavesNothingBehindWhenItsBytesCannotBeWritten) {
  {
    const FileSizeLimit limit(10);
    EXPECT_EQ(failureOf(schemaOf(R"({"description":"longer than ten bytes"})")), std::errc::file_too_large);
  }
  EXPECT_TRUE(isEmpty());
}

TEST_F(OutputSchemaFileInADirectory, LeavesNothingBehindWhenItsSchemaIsNoJSON) {
  JSONValue deep(1);
  for (std::size_t level = 0; level < JSONValue::maximumDepth; ++level) deep = JSONValue::array({deep});
  const JSONValue infinite(std::numeric_limits<double>::infinity());
  for (const JSONValue& value :
       {JSONValue(std::numeric_limits<double>::quiet_NaN()), JSONValue::array({infinite}), deep}) {
    EXPECT_THROW((void)createOutputSchemaFile(Schema{{"k", value}}).get(), EncodingError);
    EXPECT_TRUE(isEmpty());
  }
}

TEST_F(OutputSchemaFileInADirectory, IsWrittenAndRemovedAlsoWhenItsCallerIsToldToStop) {
  std::stop_source stop;
  stop.request_stop();
  const auto created = startOn(productionScheduler(), createOutputSchemaFile(schemaOf("{}")), stop.get_token());
  created->waitUntilSet();
  const OutputSchemaFile file = created->take();
  EXPECT_EQ(contentsOf(file), "{}");
  const auto removed = startOn(productionScheduler(), file.cleanup(), stop.get_token());
  removed->waitUntilSet();
  EXPECT_NO_THROW(removed->take());
  EXPECT_TRUE(isEmpty());
}

TEST_F(OutputSchemaFileInADirectory, SharesNoPathWithAnother) {
  constexpr std::size_t many = 40;
  std::vector<decltype(startOn(productionScheduler(), createOutputSchemaFile(std::nullopt)))> outcomes;
  for (std::size_t at = 0; at < many; ++at) {
    outcomes.push_back(startOn(productionScheduler(), createOutputSchemaFile(Schema{{"at", JSONValue(double(at))}})));
  }
  std::set<std::string> directories;
  for (std::size_t at = 0; at < many; ++at) {
    outcomes[at]->waitUntilSet();
    const OutputSchemaFile file = outcomes[at]->take();
    EXPECT_EQ(contentsOf(file), R"({"at":)" + std::to_string(at) + "}");
    directories.insert(directoryOf(file));
    if (at % 2 == 0) file.cleanup().get();
  }
  EXPECT_EQ(directories.size(), many);
  const auto left = std::filesystem::directory_iterator(root());
  EXPECT_EQ(static_cast<std::size_t>(std::distance(begin(left), end(left))), many / 2);
}

}  // namespace
