#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "OrmelSDK/Records/FileRecords.h"
#include "ormel-simulator/Machine/MachineAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

/// A working copy with one commit, which the remote has.
class WorkingCopy {
 public:
  explicit WorkingCopy(MachineAgent& agent) : agent_(agent), folder_(agent.outside().addDirectory("work")) {
    git({"init", "--quiet", "--bare", "--initial-branch=main", remote()});
    git({"init", "--quiet", "--initial-branch=main"});
    git({"remote", "add", "origin", remote()});
    commit("a.txt", "one\n");
    push();
  }

  const std::string& folder() const noexcept { return folder_; }
  std::string remote() const { return agent_.outside() / "remote.git"; }

  std::string git(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"git", "-c", "user.name=A", "-c", "user.email=a@example.com"});
    const auto ended = agent_.run(arguments, paramsOf({{"cwd", folder_}}));
    EXPECT_EQ(ended.exitCode, 0) << ended.stderr;
    return ended.stdout.substr(0, ended.stdout.find('\n'));
  }

  void write(const std::string& name, const std::string& contents) {
    agent_.outside().addFile("work/" + name, contents);
  }
  void commit(const std::string& name, const std::string& contents) {
    write(name, contents);
    git({"add", name});
    // Each a second after the one before, whenever it is made.
    const std::string date = std::to_string(1'600'000'000 + commits_++) + " +0000";
    agent_.run({"env", "GIT_COMMITTER_DATE=" + date, "git", "-c", "user.name=A", "-c", "user.email=a@example.com",
                "commit", "--quiet", "--message", name},
               paramsOf({{"cwd", folder_}}));
  }
  void push() { git({"push", "--quiet", "origin", "HEAD"}); }
  std::string head() { return git({"rev-parse", "HEAD"}); }

  GitDiffToRemoteResponse difference(const std::string& in = "") {
    return decode<GitDiffToRemoteResponse>(agent_->result("gitDiffToRemote", paramsOf({{"cwd", folder_ + in}})));
  }
  std::string refusal() { return agent_->refusal("gitDiffToRemote", paramsOf({{"cwd", folder_}})); }

 private:
  MachineAgent& agent_;
  std::string folder_;
  int commits_ = 0;
};

TEST(MachineGitDiff, IsEmptyWhereTheRemoteHasEverything) {
  MachineAgent agent;
  WorkingCopy copy(agent);
  const auto difference = copy.difference();
  EXPECT_EQ(difference.sha, copy.head());
  EXPECT_THAT(difference.diff, IsEmpty());
}

TEST(MachineGitDiff, HasWhatIsCommittedAndWhatIsNotAndWhatIsNew) {
  MachineAgent agent;
  WorkingCopy copy(agent);
  const std::string pushed = copy.head();
  copy.commit("b.txt", "committed\n");
  copy.write("a.txt", "two\n");
  copy.write("d/new file.txt", "new\n");
  copy.write(".gitignore", "ignored\n");
  copy.write("ignored", "ignored too\n");
  for (const char* in : {"", "/d"}) {
    const auto difference = copy.difference(in);
    EXPECT_EQ(difference.sha, pushed);
    for (const char* part : {"--- a/a.txt\n+++ b/a.txt\n@@ -1 +1 @@\n-one\n+two\n",
                             "--- /dev/null\n+++ b/b.txt\n@@ -0,0 +1 @@\n+committed\n", "+++ b/d/new file.txt",
                             "+new\n", "+++ b/.gitignore\n"}) {
      EXPECT_THAT(difference.diff, HasSubstr(part));
    }
    EXPECT_THAT(difference.diff, Not(HasSubstr("ignored too")));
    EXPECT_THAT(difference.diff, Not(HasSubstr("\x1b")));
  }
}

TEST(MachineGitDiff, StartsFromTheNewestCommitOfARemoteThatIsMergedIn) {
  MachineAgent agent;
  WorkingCopy copy(agent);
  const std::string oldBase = copy.head();
  copy.commit("upstream.txt", "upstream\n");
  copy.push();
  const std::string newBase = copy.head();
  copy.git({"checkout", "--quiet", "-b", "side", oldBase});
  copy.commit("side.txt", "side\n");
  EXPECT_EQ(copy.difference().sha, oldBase);
  copy.git({"merge", "--quiet", "--no-edit", "origin/main"});
  const auto difference = copy.difference();
  EXPECT_EQ(difference.sha, newBase);
  EXPECT_THAT(difference.diff, HasSubstr("+side\n"));
  EXPECT_THAT(difference.diff, Not(HasSubstr("upstream")));
}

TEST(MachineGitDiff, RunsNoProgramThatTheRepositoryNames) {
  MachineAgent agent({"GIT_EXTERNAL_DIFF=/no/such/program", "GIT_DIR=/no/such/repository", "GIT_PAGER=/no/such/pager"});
  const std::string marker = agent.outside() / "marker";
  const std::string program = agent.outside().addExecutable("program", "#!/bin/sh\ntouch " + marker + "\ncat\n");
  const std::string folder = agent.outside().addDirectory("work");
  const auto git = [&](const std::string& arguments) {
    return agent.runScript(
        "unset GIT_DIR GIT_EXTERNAL_DIFF; git -c user.name=A -c user.email=a@example.com " + arguments,
        paramsOf({{"cwd", folder}}));
  };
  git("init --quiet --initial-branch=main");
  agent.outside().addFile("work/a.txt", "one\n");
  agent.outside().addFile("work/.gitattributes", "*.txt diff=mine filter=mine\n");
  git("add .");
  git("commit --quiet --message first");
  git("update-ref refs/remotes/origin/main HEAD");
  for (const char* setting :
       {"diff.external", "diff.mine.command", "diff.mine.textconv", "filter.mine.clean", "filter.mine.process",
        "core.fsmonitor", "core.pager", "pager.diff", "core.sshCommand", "core.askPass"}) {
    git("config " + std::string(setting) + " " + program);
  }
  git("config filter.mine.required true");
  git("config diff.noprefix true");
  git("config color.ui always");
  git("config core.hooksPath " + agent.outside().path().string());
  agent.outside().addExecutable("post-index-change", "#!/bin/sh\ntouch " + marker + "\n");
  std::filesystem::remove(marker);
  agent.outside().addFile("work/a.txt", "two\n");
  agent.outside().addFile("work/b.txt", "new\n");
  // Git would run the programs, if it were called as usual.
  agent.runScript("unset GIT_DIR GIT_EXTERNAL_DIFF; git diff", paramsOf({{"cwd", folder}}));
  ASSERT_TRUE(std::filesystem::remove(marker));
  const JSONValue answer = agent->result("gitDiffToRemote", paramsOf({{"cwd", folder}}));
  EXPECT_FALSE(std::filesystem::exists(marker));
  const auto difference = decode<GitDiffToRemoteResponse>(answer);
  EXPECT_THAT(difference.diff, StartsWith("diff --git a/a.txt b/a.txt\n"));
  EXPECT_THAT(difference.diff, HasSubstr("-one\n+two\n"));
  EXPECT_THAT(difference.diff, HasSubstr("+new\n"));
}

TEST(MachineGitDiff, IsRefusedWhereThereIsNothingToCompareWith) {
  MachineAgent agent;
  EXPECT_EQ(agent->refusal("gitDiffToRemote"), "-32602 cwd must be a text that is not empty");
  EXPECT_EQ(agent->refusal("gitDiffToRemote", paramsOf({{"cwd", "/no/such"}})),
            "-32600 cannot run in the folder /no/such: No such file or directory");
  const std::string folder = agent.outside().addDirectory("work");
  const auto refusal = [&] { return agent->refusal("gitDiffToRemote", paramsOf({{"cwd", folder}})); };
  EXPECT_EQ(refusal(), "-32600 " + folder +
                           " is in no working copy of a git repository: fatal: not a git repository (or any of the "
                           "parent directories): .git");
  const auto git = [&](const std::string& arguments) {
    agent.runScript("git -c user.name=A -c user.email=a@example.com " + arguments, paramsOf({{"cwd", folder}}));
  };
  git("init --quiet");
  EXPECT_EQ(refusal(), "-32600 the repository in " + folder + " has no commit yet");
  git("commit --quiet --allow-empty --message first");
  EXPECT_EQ(refusal(), "-32600 no branch of a remote has a commit of " + folder);
}

TEST(MachineGitDiff, IsRefusedWithoutGit) {
  MachineAgent agent({"PATH=/no/such"});
  EXPECT_EQ(agent->refusal("gitDiffToRemote", paramsOf({{"cwd", "/"}})),
            "-32600 cannot run git: No such file or directory");
}

}  // namespace
}  // namespace ormel::simulator
