#include "OrmelSDK/Ormel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <optional>
#include <string>

#include "OrmelSDK/AppServerRun/Launch/OrmelBinaryLocator.h"
#include "Support/ProcessResources.h"
#include "Support/TemporaryDirectory.h"

namespace {

using namespace ormel;
using ormel::testing::ProcessResources;
using ormel::testing::TemporaryDirectory;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Ormel ormelAt(const std::string& path, bool claimsSelection = false) {
  OrmelOptions options;
  options.ormelPathOverride = path;
  options.selectedOrmelPathOverride = claimsSelection;
  return Ormel(options);
}

// An installed package of this platform: a script entry point, and a native executable in a package beside it.
struct InstalledPackage {
  InstalledPackage() {
    const auto names = detail::LocatorInputs::ofThisProcess().packageNames;
    const std::string root =
        "lib/node_modules/@velnor/" + std::string(names.platformPackage) + "/vendor/" + std::string(names.targetTriple);
    script = folder.addExecutable("lib/node_modules/@velnor/ormel/bin/ormel.js");
    native = folder.addExecutable(root + "/bin/ormel");
    support = folder.addDirectory(root + "/ormel-path");
  }

  TemporaryDirectory folder;
  std::string script;
  std::string native;
  std::string support;
};

TEST(Ormel, UsesTheExecutableThatItsOptionsName) {
  const TemporaryDirectory folder;
  const std::string executable = folder.addExecutable("server");
  const Ormel ormel = ormelAt(executable);
  EXPECT_EQ(ormel.executablePath(), executable);
  EXPECT_THAT(ormel.ormelPathDirectories(), IsEmpty());
  EXPECT_TRUE(ormel.options().selectedOrmelPathOverride);
  EXPECT_EQ(ormel.options().ormelPathOverride, executable);
}

TEST(Ormel, KeepsWhatTheSearchCameTo) {
  const InstalledPackage package;
  const Ormel ormel = ormelAt(package.script);
  EXPECT_EQ(ormel.executablePath(), package.native);
  EXPECT_THAT(ormel.ormelPathDirectories(), ElementsAre(package.support));
  EXPECT_TRUE(ormel.options().selectedOrmelPathOverride);
  EXPECT_EQ(ormel.options().ormelPathOverride, package.script);
}

TEST(Ormel, FindsForItselfWhetherTheOverrideIsUsed) {
  const TemporaryDirectory folder;
  const std::string executable = folder.addExecutable("server");
  EXPECT_TRUE(ormelAt(executable, false).options().selectedOrmelPathOverride);
  EXPECT_TRUE(ormelAt(executable, true).options().selectedOrmelPathOverride);
  EXPECT_FALSE(ormelAt(folder / "gone", true).options().selectedOrmelPathOverride);
  EXPECT_FALSE(ormelAt(folder / "gone", false).options().selectedOrmelPathOverride);
  OrmelOptions noOverride;
  noOverride.selectedOrmelPathOverride = true;
  EXPECT_FALSE(Ormel(noOverride).options().selectedOrmelPathOverride);
}

TEST(Ormel, LooksAtNothingOfItsOptionsButTheOverride) {
  const TemporaryDirectory folder;
  OrmelOptions options;
  options.env.emplace().emplace("KESTRION_ORMEL_PATH", folder.addExecutable("named"));
  options.env->emplace("PATH", folder.path().string());
  folder.addExecutable("ormel");
  options.executableTrustAssessment = [](const std::string&) -> OrmelExecutableTrustAssessment {
    ADD_FAILURE() << "nothing is vetted yet";
    return OrmelExecutableTrustAssessment::trusted();
  };
  const auto expected = detail::OrmelBinaryLocator().resolveOrmelBinary(std::nullopt);
  const Ormel ormel(options);
  EXPECT_EQ(ormel.executablePath(), expected.executablePath);
  EXPECT_EQ(ormel.ormelPathDirectories(), expected.pathDirectories);
}

TEST(Ormel, KeepsItsOtherOptionsAsTheyAre) {
  OrmelOptions options;
  options.baseUrl = "";
  options.apiKey = "secret";
  options.config.emplace().emplace("model", OrmelConfigValue("big"));
  options.env.emplace().emplace("A", "b");
  const Ormel ormel(options);
  EXPECT_EQ(ormel.options().baseUrl, "");
  EXPECT_EQ(ormel.options().apiKey, "secret");
  EXPECT_EQ(ormel.options().config, options.config);
  EXPECT_EQ(ormel.options().env, options.env);
  EXPECT_EQ(ormel.options().ormelPathOverride, std::nullopt);
}

TEST(Ormel, SearchesOnceAndForAll) {
  const TemporaryDirectory folder;
  const std::string executable = folder.addExecutable("server");
  const Ormel ormel = ormelAt(executable);
  std::filesystem::remove(executable);
  EXPECT_EQ(ormel.executablePath(), executable);
  const Ormel copy = ormel;
  EXPECT_EQ(copy.executablePath(), executable);
  EXPECT_TRUE(copy.options().selectedOrmelPathOverride);
}

TEST(Ormel, IsMadeWithoutAnyOptions) {
  const auto expected = detail::OrmelBinaryLocator().resolveOrmelBinary(std::nullopt);
  EXPECT_EQ(Ormel().executablePath(), expected.executablePath);
}

TEST(Ormel, MakesThreadsWithoutStartingAnything) {
  const TemporaryDirectory folder;
  const Ormel ormel = ormelAt(folder / "gone");
  EXPECT_EQ(ormel.startThread().id(), std::nullopt);
  EXPECT_EQ(ormel.resumeThread("t1").id(), "t1");
  EXPECT_EQ(ormel.resumeThread("").id(), "");
  EXPECT_FALSE(ProcessResources::now().hasChildren);
}

TEST(Ormel, NormalizesThePathOfACommand) {
  const TemporaryDirectory folder;
  const std::string plain = folder.addExecutable("server");
  EXPECT_EQ(Ormel::normalizedCLIPath(plain), plain);
  const InstalledPackage package;
  EXPECT_EQ(Ormel::normalizedCLIPath(package.script), package.native);
  EXPECT_EQ(Ormel::normalizedCLIPath(package.folder.addLink("bin/ormel", package.script)), package.native);
  EXPECT_EQ(Ormel::normalizedCLIPath(package.native), package.native);
}

TEST(Ormel, NormalizesAPathThatLeadsNowhereToWhatItWouldUseInstead) {
  const TemporaryDirectory folder;
  const std::string named = folder.addExecutable("named");
  const char* before = ::getenv("KESTRION_ORMEL_PATH");
  const std::optional<std::string> kept = before ? std::optional<std::string>(before) : std::nullopt;
  ASSERT_EQ(::setenv("KESTRION_ORMEL_PATH", named.c_str(), 1), 0);
  EXPECT_EQ(Ormel::normalizedCLIPath(folder / "gone"), named);
  EXPECT_EQ(ormelAt(folder / "gone").executablePath(), named);
  ASSERT_EQ(kept ? ::setenv("KESTRION_ORMEL_PATH", kept->c_str(), 1) : ::unsetenv("KESTRION_ORMEL_PATH"), 0);
}

}  // namespace
