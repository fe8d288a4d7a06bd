#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <functional>
#include <string>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Ormel.h"
#include "OrmelSDK/OrmelControlSession.h"
#include "OrmelSDK/Thread.h"
#include "Support/Eventually.h"
#include "Support/ProcessResources.h"
#include "Support/TemporaryDirectory.h"

namespace {

using namespace ormel;
using namespace ormel::testing;

/// A folder to stand in, with programs in its `PATH` that nobody has named and that leave a mark when they run.
class ExactStart : public ::testing::Test {
 protected:
  ExactStart() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder.path());
    for (const std::string name : {"app-server", "ormel", "server", "-server"}) {
      folder.addExecutable("decoys/" + name, "#!/bin/sh\necho \"$0\" >>" + mark() + "\n");
    }
    options.env.emplace()["PATH"] = folder / "decoys:/usr/bin:/bin";
  }
  ~ExactStart() override { std::filesystem::current_path(before_); }

  std::string mark() const { return folder / "mark"; }

  static std::string refusalOf(const std::function<void()>& call) {
    try {
      call();
    } catch (const OrmelProcessError& error) {
      EXPECT_EQ(error.kind(), OrmelProcessError::Kind::spawnFailed);
      return error.description();
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what();
    }
    return "";
  }

  /// Every way to a server refuses the executable, and starts nothing.
  void expectRefusal(const std::string& path) const {
    const Ormel ormel(options);
    ASSERT_EQ(ormel.executablePath(), path);
    const std::string beginning = "The server executable \"" + path + "\" cannot be started: ";
    const OrmelControlSession session = ormel.makeControlSession();
    const std::function<void()> calls[] = {
        [&] { ormel.startThread().run("hello").get(); },
        [&] { ormel.resumeThread("t1").run("hello").get(); },
        [&] { ormel.archiveThread("t1").get(); },
        [&] { session.archiveThread("t1").get(); },
    };
    for (const auto& call : calls) EXPECT_TRUE(refusalOf(call).starts_with(beginning)) << path;
    EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
    EXPECT_FALSE(std::filesystem::exists(mark())) << path;
  }

  const TemporaryDirectory folder;
  OrmelOptions options;

 private:
  const std::filesystem::path before_;
};

TEST_F(ExactStart, IsRefusedToAPathThatMeansSomethingElse) {
  const std::string named[] = {folder / "a=b/server", "a=b/server", "-server", "-i/server", "server"};
  for (const auto& path : named) {
    folder.addExecutable(std::filesystem::path(path).is_absolute() ? "a=b/server" : path);
    options.ormelPathOverride = path;
    expectRefusal(path);
  }
}

TEST_F(ExactStart, IsRefusedToTheNameThatStandsForNothingFound) {
  ::setenv("PATH", "/nowhere", 1);
  ::setenv("HOME", "/nowhere", 1);
  ::unsetenv("KESTRION_ORMEL_PATH");
  if (Ormel(options).executablePath() != "ormel") return;
  options.executableTrustAssessment = [](const std::string&) { return OrmelExecutableTrustAssessment::trusted(); };
  expectRefusal("ormel");
}

TEST_F(ExactStart, IsTheStartOfEveryOtherPath) {
  for (const std::string path : {"./server", "sub/-server", "./-i"}) {
    folder.addExecutable(path, "#!/bin/sh\necho \"the one\" >>" + mark() + "\n");
    options.ormelPathOverride = path;
    EXPECT_ANY_THROW(Ormel(options).archiveThread("t1").get()) << "it is no server";
    EXPECT_TRUE(std::filesystem::remove(mark())) << path;
  }
}

}  // namespace
