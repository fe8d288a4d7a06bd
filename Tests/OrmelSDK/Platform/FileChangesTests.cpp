#include "OrmelSDK/Platform/FileChanges.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "OrmelSDK/Base/FileSystemError.h"
#include "OrmelSDK/Platform/FileTests.h"
#include "Support/FileSystemLimits.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::detail {
namespace {

using testing::DirectoryLocked;
using testing::EnvironmentVariableSet;
using testing::FileSizeLimit;
using testing::TemporaryDirectory;

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

template <typename Function>
std::error_code errorOf(const Function& function) {
  try {
    function();
  } catch (const FileSystemError& error) {
    EXPECT_EQ(error.what(), error.path() + ": " + error.code().message());
    return error.code();
  }
  return {};
}

TEST(FileSystemError, TellsThePathAndTheSystemsOwnError) {
  const FileSystemError error("/a/b", std::make_error_code(std::errc::permission_denied));
  EXPECT_EQ(error.path(), "/a/b");
  EXPECT_EQ(error.code(), std::errc::permission_denied);
  EXPECT_STREQ(error.what(), "/a/b: Permission denied");
}

TEST(WriteFileAtomically, WritesAllBytes) {
  const TemporaryDirectory folder;
  for (const std::string& bytes : {std::string(), std::string("a\0b\n", 4), std::string(300'000, 'x')}) {
    writeFileAtomically(folder / "file", bytes);
    EXPECT_EQ(contentsOf(folder / "file"), bytes);
    EXPECT_EQ(directoryEntries(folder.path().string()), std::vector{folder / "file"});
  }
}

TEST(WriteFileAtomically, LeavesAReaderWithTheFileThatItOpened) {
  const TemporaryDirectory folder;
  const std::string old(300'000, 'o');
  const std::string path = folder.addFile("file", old);
  std::ifstream reader(path, std::ios::binary);
  std::string read(1, static_cast<char>(reader.get()));
  writeFileAtomically(path, "new");
  read.append(std::istreambuf_iterator<char>(reader), {});
  EXPECT_EQ(read.size(), old.size());
  EXPECT_EQ(contentsOf(path), "new");
}

TEST(WriteFileAtomically, ChangesNothingWhenItFails) {
  const TemporaryDirectory folder;
  const std::string path = folder.addFile("file", "old");
  {
    const FileSizeLimit limit(100'000);
    EXPECT_EQ(errorOf([&] { writeFileAtomically(path, std::string(200'000, 'x')); }), std::errc::file_too_large);
  }
  EXPECT_EQ(contentsOf(path), "old");
  EXPECT_EQ(errorOf([&] { writeFileAtomically(folder / "gone/file", "x"); }), std::errc::no_such_file_or_directory);
  const std::string directory = folder.addDirectory("directory");
  EXPECT_EQ(errorOf([&] { writeFileAtomically(directory, "x"); }), std::errc::is_a_directory);
  EXPECT_EQ(directoryEntries(folder.path().string()).size(), 2u) << "something was left behind";
}

TEST(MakeDirectories, MakesThoseAboveAndLeavesOneThatIsThere) {
  const TemporaryDirectory folder;
  makeDirectories(folder / "a/b/c");
  writeFileAtomically(folder / "a/b/c/file", "kept");
  makeDirectories(folder / "a/b/c");
  EXPECT_EQ(contentsOf(folder / "a/b/c/file"), "kept");
}

TEST(RemoveTree, RemovesEverythingInADirectoryAndNothingBeside) {
  const TemporaryDirectory folder;
  const std::string outside = folder.addFile("outside/file", "kept");
  folder.addFile("tree/a/b/file");
  folder.addLink("tree/link", folder / "outside");
  removeTree(folder / "tree");
  EXPECT_FALSE(std::filesystem::exists(folder / "tree"));
  EXPECT_EQ(contentsOf(outside), "kept");
  removeTree(folder / "tree");
}

TEST(RemoveTree, IsSilentAboutWhatItMayNotRemove) {
  const TemporaryDirectory folder;
  const std::string file = folder.addFile("locked/file");
  {
    const DirectoryLocked locked(folder / "locked");
    removeTree(folder / "locked");
  }
  EXPECT_TRUE(std::filesystem::exists(file));
}

TEST(TemporaryDirectoryOfTheSystem, IsTheOneThatTheEnvironmentNames) {
  const std::string here = std::filesystem::current_path().string();
  const struct {
    std::string variable;
    std::string directory;
  } rows[] = {{"/some/where", "/some/where"}, {"some where", here + "/some where"}};
  for (const auto& row : rows) {
    const EnvironmentVariableSet set("TMPDIR", row.variable);
    EXPECT_EQ(temporaryDirectory(), row.directory);
  }
  const EnvironmentVariableSet empty("TMPDIR", "");
  EXPECT_TRUE(isDirectory(temporaryDirectory())) << temporaryDirectory();
}

}  // namespace
}  // namespace ormel::detail
