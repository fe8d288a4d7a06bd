#include "OrmelSDK/AppServerRun/Launch/OrmelBinaryLocator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <utility>

#include "Support/TemporaryDirectory.h"

namespace {

using ormel::detail::HostPlatform;
using ormel::detail::LocatorInputs;
using ormel::detail::OrmelBinaryLocator;
using ormel::detail::OrmelBinaryResolution;
using ormel::detail::OrmelPackageNames;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

OrmelBinaryResolution plain(std::string path, bool selectedOverride = false) {
  return {.executablePath = std::move(path), .pathDirectories = {}, .selectedOverride = selectedOverride};
}

// A machine that consists of one directory.
class OrmelBinaryLocatorTest : public testing::Test {
 protected:
  OrmelBinaryLocator locator() const {
    LocatorInputs inputs;
    inputs.environmentVariable = [this](const std::string& name) {
      const auto found = variables.find(name);
      return found == variables.end() ? std::nullopt : std::optional(found->second);
    };
    inputs.homeDirectory = machine / "home";
    inputs.resourceDirectory = resources;
    inputs.rootDirectory = machine / "root";
    inputs.packageNames = OrmelPackageNames::of(platform);
    return OrmelBinaryLocator(inputs);
  }

  std::string vendorTree(const std::string& above) const {
    return above + "/vendor/" + std::string(OrmelPackageNames::of(platform).targetTriple);
  }

  // An installed package: a script entry point and a native executable in a package beside it.
  std::string addEntrypoint(const std::string& modules) const {
    return machine.addExecutable(modules + "/@velnor/ormel/bin/ormel.js");
  }
  std::string nativeRoot(const std::string& modules) const {
    return vendorTree(modules + "/@velnor/" + std::string(OrmelPackageNames::of(platform).platformPackage));
  }

  ormel::testing::TemporaryDirectory machine;
  std::map<std::string, std::string> variables;
  std::optional<std::string> resources;
  HostPlatform platform = HostPlatform::linuxX64;
};

TEST_F(OrmelBinaryLocatorTest, GivesTheBareNameWhenThereIsNoExecutableAnywhere) {
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain("ormel"));
}

TEST_F(OrmelBinaryLocatorTest, GivesTheBareNameWhenAnOverrideNamesNothingEither) {
  EXPECT_EQ(locator().resolveOrmelBinary("/nowhere/ormel"), plain("ormel"));
}

TEST_F(OrmelBinaryLocatorTest, UsesAnOverrideThatIsAPlainExecutableAsGiven) {
  const std::string path = machine.addExecutable("elsewhere/my-ormel");
  EXPECT_EQ(locator().resolveOrmelBinary(path), plain(path, true));
}

TEST_F(OrmelBinaryLocatorTest, KeepsTheLinkToAPlainExecutable) {
  machine.addExecutable("elsewhere/my-ormel");
  const std::string link = machine.addLink("link", machine / "elsewhere/my-ormel");
  EXPECT_EQ(locator().resolveOrmelBinary(link), plain(link, true));
}

TEST_F(OrmelBinaryLocatorTest, PrefersTheOverrideToEverythingElse) {
  variables["KESTRION_ORMEL_PATH"] = machine.addExecutable("environment/ormel");
  variables["PATH"] = machine / "environment";
  resources = machine / "resources";
  machine.addExecutable(vendorTree("resources") + "/ormel/ormel");
  const std::string path = machine.addExecutable("elsewhere/my-ormel");
  EXPECT_EQ(locator().resolveOrmelBinary(path), plain(path, true));
}

TEST_F(OrmelBinaryLocatorTest, PassesOverAnOverrideThatIsNoExecutableFile) {
  const std::string usual = machine.addExecutable("bin/ormel");
  variables["PATH"] = machine / "bin";
  const std::string readable = machine.addFile("readable");
  const std::string directory = machine.addDirectory("directory");
  const std::string broken = machine.addLink("broken", machine / "nothing");
  const std::string loop = machine.addLink("loop", machine / "loop");
  const std::string cut = usual + std::string(1, '\0') + "junk";
  for (const auto& path : {std::string(), std::string("   "), std::string(" \n\t"), machine / "missing", readable,
                           directory, broken, loop, cut, std::string(100'000, 'x')}) {
    EXPECT_EQ(locator().resolveOrmelBinary(path), plain(usual)) << path;
  }
}

TEST_F(OrmelBinaryLocatorTest, DoesNotTrimTheOverride) {
  const std::string path = machine.addExecutable("bin/ormel");
  EXPECT_EQ(locator().resolveOrmelBinary(" " + path + " "), plain("ormel"));
  const std::string spaced = machine.addExecutable("bin/ormel ");
  EXPECT_EQ(locator().resolveOrmelBinary(spaced), plain(spaced, true));
}

TEST_F(OrmelBinaryLocatorTest, LeadsAnOverrideThatLinksIntoAVendorTreeToTheResolvedPath) {
  const std::string native = machine.addExecutable(vendorTree("package") + "/bin/ormel");
  const std::string link = machine.addLink("link", native);
  EXPECT_EQ(locator().resolveOrmelBinary(link), plain(native, true));

  const std::string support = machine.addDirectory(vendorTree("package") + "/ormel-path");
  const OrmelBinaryResolution expected{
      .executablePath = native, .pathDirectories = {support}, .selectedOverride = true};
  EXPECT_EQ(locator().resolveOrmelBinary(link), expected);
  EXPECT_EQ(locator().resolveOrmelBinary(native), expected);
}

TEST_F(OrmelBinaryLocatorTest, LeadsAnOverrideThatIsAScriptEntryPointToTheNativeExecutable) {
  const std::string script = addEntrypoint("lib/node_modules");
  const std::string native = machine.addExecutable(nativeRoot("lib/node_modules") + "/bin/ormel");
  const std::string support = machine.addDirectory(nativeRoot("lib/node_modules") + "/ormel-path");
  const OrmelBinaryResolution expected{
      .executablePath = native, .pathDirectories = {support}, .selectedOverride = true};
  EXPECT_EQ(locator().resolveOrmelBinary(script), expected);
  EXPECT_EQ(locator().resolveOrmelBinary(machine.addLink("bin/ormel", script)), expected);
}

TEST_F(OrmelBinaryLocatorTest, UsesAScriptEntryPointWithoutANativeExecutableAsGiven) {
  const std::string script = addEntrypoint("lib/node_modules");
  machine.addFile(nativeRoot("lib/node_modules") + "/bin/ormel");
  EXPECT_EQ(locator().resolveOrmelBinary(script), plain(script, true));
}

TEST_F(OrmelBinaryLocatorTest, TakesThePathOfTheEnvironmentTrimmed) {
  const std::string path = machine.addExecutable("elsewhere/my-ormel");
  variables["KESTRION_ORMEL_PATH"] = " \t" + path + "\r\n";
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain(path));
}

TEST_F(OrmelBinaryLocatorTest, LeadsThePathOfTheEnvironmentToTheNativeExecutable) {
  variables["KESTRION_ORMEL_PATH"] = addEntrypoint("node_modules");
  const std::string native = machine.addExecutable(nativeRoot("node_modules") + "/bin/ormel");
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain(native));
  variables["KESTRION_ORMEL_PATH"] = machine.addLink("link", native);
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain(native));
}

TEST_F(OrmelBinaryLocatorTest, PrefersThePathOfTheEnvironmentToTheApplicationsResourcesAndTheSearchPath) {
  resources = machine / "resources";
  const std::string bundled = machine.addExecutable(vendorTree("resources") + "/ormel/ormel");
  machine.addExecutable("bin/ormel");
  variables["PATH"] = machine / "bin";
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain(bundled));
  const std::string named = machine.addExecutable("elsewhere/my-ormel");
  variables["KESTRION_ORMEL_PATH"] = named;
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain(named));
  EXPECT_EQ(locator().resolveOrmelBinary("/no/such/override"), plain(named));
}

TEST_F(OrmelBinaryLocatorTest, PassesOverAPathOfTheEnvironmentThatIsNoExecutableFile) {
  const std::string usual = machine.addExecutable("bin/ormel");
  variables["PATH"] = machine / "bin";
  for (const auto& path : {std::string(), std::string("  "), machine / "missing", machine.addFile("readable")}) {
    variables["KESTRION_ORMEL_PATH"] = path;
    EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain(usual)) << path;
  }
}

TEST_F(OrmelBinaryLocatorTest, PrefersTheApplicationsResourcesToThePath) {
  variables["PATH"] = machine / "bin";
  machine.addExecutable("bin/ormel");
  resources = machine / "resources";
  const std::string bundled = machine.addExecutable(vendorTree("resources") + "/ormel/ormel");
  const std::string directory = machine.addDirectory(vendorTree("resources") + "/path");
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt),
            (OrmelBinaryResolution{.executablePath = bundled, .pathDirectories = {directory}}));
}

TEST_F(OrmelBinaryLocatorTest, LeadsTheFirstCandidateToTheNativeExecutable) {
  const std::string script = addEntrypoint("lib/node_modules");
  machine.addLink("bin/ormel", script);
  variables["PATH"] = machine / "bin";
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain(machine / "bin/ormel"));
  const std::string native = machine.addExecutable(nativeRoot("lib/node_modules") + "/bin/ormel");
  EXPECT_EQ(locator().resolveOrmelBinary(std::nullopt), plain(native));
}

TEST_F(OrmelBinaryLocatorTest, TrimsVariablesAndCountsBlankOnesAsUnset) {
  variables = {{"A", " a b\n"}, {"BLANK", " \t\r\n\xC2\xA0\xE3\x80\x80"}, {"EMPTY", ""}};
  EXPECT_EQ(locator().environmentValue("A"), "a b");
  EXPECT_EQ(locator().environmentValue("BLANK"), std::nullopt);
  EXPECT_EQ(locator().environmentValue("EMPTY"), std::nullopt);
  EXPECT_EQ(locator().environmentValue("MISSING"), std::nullopt);
}

TEST_F(OrmelBinaryLocatorTest, KeepsTheExistingDirectoriesInOrder) {
  const std::string one = machine.addDirectory("one");
  const std::string two = machine.addDirectory("two");
  const std::string file = machine.addFile("file");
  EXPECT_THAT(OrmelBinaryLocator::existingDirectories({two, machine / "missing", file, "", one}),
              ElementsAre(two, one));
}

TEST_F(OrmelBinaryLocatorTest, FindsThePackagedExecutableAmongTheResources) {
  resources = machine / "resources";
  const std::string root = vendorTree("resources");
  const std::string packaged = machine.addExecutable(root + "/bin/ormel");
  EXPECT_EQ(locator().bundledOrmelResolution("ormel"), std::nullopt);
  machine.addFile(root + "/ormel-package.json", "{}");
  EXPECT_EQ(locator().bundledOrmelResolution("ormel"), plain(packaged));
  const std::string support = machine.addDirectory(root + "/ormel-path");
  machine.addExecutable(root + "/ormel/ormel");
  machine.addDirectory(root + "/path");
  EXPECT_EQ(locator().bundledOrmelResolution("ormel"),
            (OrmelBinaryResolution{.executablePath = packaged, .pathDirectories = {support}}));
}

TEST_F(OrmelBinaryLocatorTest, FallsBackToThePlainExecutableAmongTheResources) {
  resources = machine / "resources";
  const std::string root = vendorTree("resources");
  machine.addFile(root + "/bin/ormel");
  machine.addFile(root + "/ormel-package.json", "{}");
  machine.addDirectory(root + "/ormel-path");
  const std::string other = machine.addExecutable(root + "/ormel/ormel");
  EXPECT_EQ(locator().bundledOrmelResolution("ormel"), plain(other));
  const std::string directory = machine.addDirectory(root + "/path");
  EXPECT_EQ(locator().bundledOrmelResolution("ormel"),
            (OrmelBinaryResolution{.executablePath = other, .pathDirectories = {directory}}));
}

TEST_F(OrmelBinaryLocatorTest, FindsNothingAmongTheResourcesOfAProgramThatHasNone) {
  machine.addExecutable(vendorTree("resources") + "/ormel/ormel");
  EXPECT_EQ(locator().bundledOrmelResolution("ormel"), std::nullopt);
  resources = machine / "nowhere";
  EXPECT_EQ(locator().bundledOrmelResolution("ormel"), std::nullopt);
}

TEST_F(OrmelBinaryLocatorTest, GathersTheCandidatesInTheirOrder) {
  const std::string bundled = machine.addExecutable("bundled/ormel");
  const std::string second = machine.addExecutable("second/ormel");
  const std::string first = machine.addExecutable("first/ormel");
  const std::string bun = machine.addExecutable("home/.bun/bin/ormel");
  const std::string homebrew = machine.addExecutable("root/opt/homebrew/bin/ormel");
  const std::string local = machine.addExecutable("root/usr/local/bin/ormel");
  const std::string node = machine.addExecutable("home/.nvm/versions/node/v22.1.0/bin/ormel");
  variables["PATH"] = machine / "first" + ":" + (machine / "second");
  EXPECT_THAT(locator().ormelPathCandidates("ormel", bundled),
              ElementsAre(bundled, first, second, bun, homebrew, local, node));
  EXPECT_THAT(locator().ormelPathCandidates("ormel", std::nullopt),
              ElementsAre(first, second, bun, homebrew, local, node));
}

TEST_F(OrmelBinaryLocatorTest, ListsEveryInstalledVersionOfNode) {
  const std::string one = machine.addExecutable("home/.nvm/versions/node/v20/bin/ormel");
  const std::string two = machine.addExecutable("home/.nvm/versions/node/v22/bin/ormel");
  machine.addFile("home/.nvm/versions/node/v18/bin/ormel");
  machine.addFile("home/.nvm/versions/node/file");
  EXPECT_THAT(locator().ormelPathCandidates("ormel", std::nullopt), UnorderedElementsAre(one, two));
}

TEST_F(OrmelBinaryLocatorTest, KeepsOnlyExecutableFilesAsCandidates) {
  machine.addFile("one/ormel");
  machine.addDirectory("two/ormel");
  const std::string three = machine.addExecutable("three/ormel");
  variables["PATH"] = machine / "one" + ":" + (machine / "two") + ":" + (machine / "three") + ":/nowhere";
  EXPECT_THAT(locator().ormelPathCandidates("ormel", machine / "missing"), ElementsAre(three));
}

TEST_F(OrmelBinaryLocatorTest, MakesOneCandidateOfADirectoryThatIsTwiceOnThePath) {
  const std::string path = machine.addExecutable("bin/ormel");
  variables["PATH"] = machine / "bin" + ":" + (machine / "bin");
  EXPECT_THAT(locator().ormelPathCandidates("ormel", std::nullopt), ElementsAre(path));
  EXPECT_THAT(locator().ormelPathCandidates("ormel", path), ElementsAre(path));
}

TEST_F(OrmelBinaryLocatorTest, MakesNoRelativeCandidateOfAnEmptyPartOfThePath) {
  const auto before = std::filesystem::current_path();
  machine.addExecutable("ormel");
  std::filesystem::current_path(machine.path());
  variables["PATH"] = "::/nowhere:";
  EXPECT_THAT(locator().ormelPathCandidates("ormel", std::nullopt), IsEmpty());
  std::filesystem::current_path(before);
}

TEST_F(OrmelBinaryLocatorTest, SurvivesAPathOfNonsense) {
  const std::string path = machine.addExecutable("bin/ormel");
  variables["PATH"] = std::string(10'000, ':') + "\xFF\xFE:\n:" + std::string(100'000, 'x') + ":" + (machine / "bin") +
                      "/:~/bin:" + std::string("a\0b", 3);
  EXPECT_THAT(locator().ormelPathCandidates("ormel", std::nullopt), ElementsAre(path));
}

TEST_F(OrmelBinaryLocatorTest, LooksAtNoHomeDirectoryIfThereIsNone) {
  machine.addExecutable("home/.bun/bin/ormel");
  LocatorInputs inputs;
  inputs.rootDirectory = machine / "root";
  EXPECT_EQ(OrmelBinaryLocator(inputs).resolveOrmelBinary(std::nullopt), plain("ormel"));
}

TEST_F(OrmelBinaryLocatorTest, RecognisesAnEntryPointOnlyByAllItsComponents) {
  machine.addExecutable(nativeRoot("node_modules") + "/bin/ormel");
  for (const auto* const path :
       {"node_modules/@velnor/ormel/bin/other.js", "node_modules/@velnor/ormel/lib/ormel.js",
        "node_modules/@velnor/other/bin/ormel.js", "node_modules/@other/ormel/bin/ormel.js",
        "modules/@velnor/ormel/bin/ormel.js", "my_node_modules/@velnor/ormel/bin/ormel.js", "ormel.js"}) {
    EXPECT_EQ(locator().normalizeOrmelEntrypoint(machine.addExecutable(path)), std::nullopt) << path;
  }
  EXPECT_NE(locator().normalizeOrmelEntrypoint(addEntrypoint("node_modules")), std::nullopt);
}

TEST_F(OrmelBinaryLocatorTest, StandardisesAPathBeforeItLooksAtItsComponents) {
  addEntrypoint("node_modules");
  const std::string native = machine.addExecutable(nativeRoot("node_modules") + "/bin/ormel");
  EXPECT_EQ(locator().normalizeOrmelEntrypoint(machine / "node_modules/./@velnor/ormel/../ormel/bin//ormel.js"),
            plain(native));
}

TEST_F(OrmelBinaryLocatorTest, RecognisesANativeExecutableOnlyByAllItsComponents) {
  const std::string triple(OrmelPackageNames::of(platform).targetTriple);
  for (const auto& path :
       {"vendor/" + triple + "/bin/other", "vendor/" + triple + "/lib/ormel",
        std::string("vendor/aarch64-apple-darwin/bin/ormel"), "sold/" + triple + "/bin/ormel", std::string("ormel")}) {
    EXPECT_EQ(locator().nativeOrmelResolution(machine.addExecutable(path)), std::nullopt) << path;
  }
  const std::string native = machine.addExecutable(vendorTree("").substr(1) + "/bin/ormel");
  EXPECT_EQ(locator().nativeOrmelResolution(native), plain(native));
}

TEST_F(OrmelBinaryLocatorTest, UsesThePackageNamesOfThePlatform) {
  platform = HostPlatform::macOSArm64;
  const std::string script = addEntrypoint("node_modules");
  const std::string native =
      machine.addExecutable("node_modules/@velnor/ormel-darwin-arm64/vendor/aarch64-apple-darwin/bin/ormel");
  EXPECT_EQ(locator().normalizeOrmelEntrypoint(script), plain(native));
  platform = HostPlatform::linuxArm64;
  EXPECT_EQ(locator().normalizeOrmelEntrypoint(script), std::nullopt);
}

TEST(OrmelPackageNames, AreAPairOfTheirOwnForEachPlatform) {
  const auto names = [](HostPlatform platform) {
    const auto pair = OrmelPackageNames::of(platform);
    return std::pair(pair.targetTriple, pair.platformPackage);
  };
  using Pair = std::pair<std::string_view, std::string_view>;
  EXPECT_EQ(names(HostPlatform::macOSArm64), Pair("aarch64-apple-darwin", "ormel-darwin-arm64"));
  EXPECT_EQ(names(HostPlatform::linuxX64), Pair("x86_64-unknown-linux-musl", "ormel-linux-x64"));
  EXPECT_EQ(names(HostPlatform::linuxArm64), Pair("aarch64-unknown-linux-musl", "ormel-linux-arm64"));
}

TEST(ResourceDirectoryOfProgram, IsBesideTheExecutablesFolderInABundle) {
  const ormel::testing::TemporaryDirectory machine;
  const std::string program = machine / "App.app/Contents/MacOS/App";
  EXPECT_EQ(ormel::detail::resourceDirectoryOfProgram(program), std::nullopt);
  const std::string resources = machine.addDirectory("App.app/Contents/Resources");
  EXPECT_EQ(ormel::detail::resourceDirectoryOfProgram(program), resources);
}

TEST(ResourceDirectoryOfProgram, IsTheSharedDirectoryOfAnInstalledProgram) {
  const ormel::testing::TemporaryDirectory machine;
  machine.addDirectory("usr/Resources");
  const std::string program = machine / "usr/bin/app";
  EXPECT_EQ(ormel::detail::resourceDirectoryOfProgram(program), std::nullopt);
  const std::string resources = machine.addDirectory("usr/share/ormel");
  EXPECT_EQ(ormel::detail::resourceDirectoryOfProgram(program), resources);
}

TEST(LocatorInputs, AreThoseOfThisProcessByDefault) {
  const auto inputs = LocatorInputs::ofThisProcess();
  EXPECT_EQ(inputs.rootDirectory, "");
  EXPECT_EQ(inputs.environmentVariable("PATH"), std::string(std::getenv("PATH")));
  ASSERT_TRUE(inputs.homeDirectory.has_value());
  EXPECT_EQ(inputs.packageNames.targetTriple, OrmelPackageNames::of(ormel::detail::hostPlatform()).targetTriple);
  const auto program = ormel::detail::executablePathOfThisProcess();
  ASSERT_TRUE(program.has_value());
  EXPECT_EQ(std::filesystem::path(*program).filename(), "launch-tests");
}

}  // namespace
