#include "OrmelSDK/Platform/Spawn.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "Support/RecordedChild.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::detail {

namespace {

using testing::helper;
using testing::shell;
using testing::TemporaryDirectory;

std::string readToEnd(const FileDescriptor& descriptor) {
  std::string text;
  char block[4096];
  for (ssize_t count = 0; (count = ::read(descriptor.number(), block, sizeof block)) > 0;) {
    text.append(block, static_cast<std::size_t>(count));
  }
  return text;
}

/// Children are started in one of two ways, and nobody may notice in which.
constexpr EndNotice bothWays[] = {EndNotice::automatic, EndNotice::waiterThread};

std::string outputOf(const LaunchSettings& settings, EndNotice notice) {
  Pipe output = makePipe();
  StandardStreams streams;
  streams.output = output.writeEnd.number();
  const SpawnedChild child = spawn(settings, streams, notice);
  output.writeEnd.close();
  auto text = readToEnd(output.readEnd);
  ::waitpid(child.pid, nullptr, 0);
  return text;
}

/// The standard output of a program whose other streams are inherited.
std::string outputOf(const LaunchSettings& settings) {
  auto text = outputOf(settings, EndNotice::automatic);
  EXPECT_EQ(outputOf(settings, EndNotice::waiterThread), text);
  return text;
}

std::string failureOf(const LaunchSettings& settings, EndNotice notice) {
  try {
    const SpawnedChild child = spawn(settings, {}, notice);
    ::waitpid(child.pid, nullptr, 0);
    return "started";
  } catch (const ProcessLaunchError& error) {
    auto text = error.description();
    return text.replace(0, settings.executable.size(), "FILE");
  }
}

/// The text of the failure to start a program, with its path replaced by "FILE".
std::string failureOf(const std::filesystem::path& executable) {
  LaunchSettings settings;
  settings.executable = executable;
  auto text = failureOf(settings, EndNotice::automatic);
  EXPECT_EQ(failureOf(settings, EndNotice::waiterThread), text);
  return text;
}

void writeExecutable(const std::filesystem::path& path, const std::string& text, mode_t mode) {
  std::ofstream(path) << text;
  ::chmod(path.c_str(), mode);
}

/// The descriptors that this test program passes on to every child because it inherited them itself.
std::string inheritedDescriptors() {
  std::string text;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) == 0) text += std::to_string(descriptor) + " ";
  }
  return text;
}

}  // namespace

TEST(Spawn, GivesTheArgumentsAndTheEnvironment) {
  auto settings = shell("printf '%s|%s' \"$1\" \"$GREETING\"");
  settings.arguments.insert(settings.arguments.end(), {"name", "a b\"c"});
  settings.environment.emplace()["GREETING"] = "hello world";
  EXPECT_EQ(outputOf(settings), "a b\"c|hello world");
}

TEST(Spawn, LetsTheChildInheritTheEnvironment) {
  ::setenv("ORMEL_TEST_INHERITED", "yes", 1);
  EXPECT_EQ(outputOf(shell("printf %s \"$ORMEL_TEST_INHERITED\"")), "yes");
}

TEST(Spawn, GivesAnEmptyEnvironmentWhereThatIsAsked) {
  auto settings = shell("/usr/bin/env | /bin/grep -c HOME");
  settings.environment.emplace();
  EXPECT_EQ(outputOf(settings), "0\n");
}

TEST(Spawn, StartsAProcessGroupThatATerminalsInterruptDoesNotReach) {
  for (const auto notice : bothWays) {
    Pipe input = makePipe();
    StandardStreams streams;
    streams.input = input.readEnd.number();
    const SpawnedChild child = spawn(shell("read line"), streams, notice);
    EXPECT_EQ(::getpgid(child.pid), child.pid);
    input.writeEnd.close();
    ::waitpid(child.pid, nullptr, 0);
  }
}

TEST(Spawn, TellsWhyAProgramCannotBeStarted) {
  const TemporaryDirectory directory;
  EXPECT_EQ(failureOf(directory.path() / "missing"), "FILE: No such file or directory");
  EXPECT_EQ(failureOf("/tmp"), "FILE: Permission denied");
  EXPECT_EQ(failureOf(""), "FILE: No such file or directory");
}

TEST(Spawn, RefusesADanglingLink) {
  const TemporaryDirectory directory;
  std::filesystem::create_symlink(directory.path() / "nowhere", directory.path() / "link");
  EXPECT_EQ(failureOf(directory.path() / "link"), "FILE: No such file or directory");
}

TEST(Spawn, RefusesAFileThatIsNotExecutable) {
  const TemporaryDirectory directory;
  writeExecutable(directory.path() / "text", "#!/bin/sh\n", 0600);
  EXPECT_EQ(failureOf(directory.path() / "text"), "FILE: Permission denied");
}

TEST(Spawn, RefusesAScriptWithoutItsInterpreter) {
  const TemporaryDirectory directory;
  writeExecutable(directory.path() / "script", "#!/no/such/interpreter\n", 0700);
  EXPECT_EQ(failureOf(directory.path() / "script"), "FILE: No such file or directory");
}

TEST(Spawn, RefusesATextWithAZeroByte) {
  auto settings = shell("true");
  settings.arguments.push_back(std::string("a\0b", 3));
  for (const auto notice : bothWays) EXPECT_THROW(spawn(settings, {}, notice), ProcessLaunchError);
}

TEST(Spawn, KeepsTheSystemsErrorNumber) {
  LaunchSettings settings;
  settings.executable = "/no/such/file";
  for (const auto notice : bothWays) {
    try {
      spawn(settings, {}, notice);
      FAIL();
    } catch (const ProcessLaunchError& error) {
      EXPECT_EQ(error.errorNumber(), ENOENT);
    }
  }
}

#if defined(__linux__)
TEST(Spawn, GivesADescriptorThatIsAsOldAsTheChild) {
  const SpawnedChild child = spawn(shell("exit 0"), {});
  EXPECT_TRUE(child.pidfd.isOpen());
  EXPECT_EQ(::fcntl(child.pidfd.number(), F_GETFD), FD_CLOEXEC);
  ::waitpid(child.pid, nullptr, 0);
  const SpawnedChild another = spawn(shell("exit 0"), {}, EndNotice::waiterThread);
  EXPECT_FALSE(another.pidfd.isOpen());
  ::waitpid(another.pid, nullptr, 0);
}
#endif

TEST(Spawn, LeavesTheSignalsOfThisThreadAsTheyWere) {
  sigset_t some;
  sigemptyset(&some);
  sigaddset(&some, SIGUSR1);
  sigset_t before;
  pthread_sigmask(SIG_SETMASK, &some, &before);
  outputOf(shell("exit 0"));
  EXPECT_EQ(failureOf("/no/such/file"), "FILE: No such file or directory");
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, &before, &after);
  for (int number = 1; number < NSIG; ++number) EXPECT_EQ(sigismember(&after, number), sigismember(&some, number));
}

TEST(Spawn, StartsTheChildWithDefaultSignals) {
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGINT, SIG_IGN);
  ::signal(SIGUSR1, SIG_IGN);
  sigset_t all;
  sigfillset(&all);
  sigset_t before;
  pthread_sigmask(SIG_SETMASK, &all, &before);
  EXPECT_EQ(outputOf(helper({"signals"})), "unusual:");
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  for (const int number : {SIGPIPE, SIGINT, SIGUSR1}) {
    EXPECT_EQ(::signal(number, SIG_DFL), SIG_IGN) << "the application's own disposition is left alone";
  }
}

TEST(Spawn, LeaksNoDescriptorWhenManyThreadsSpawnAtOnce) {
  const std::string expected = inheritedDescriptors();
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&expected] {
      for (int child = 0; child < 25; ++child) EXPECT_EQ(outputOf(helper({"descriptors"})), expected);
    });
  }
  for (auto& thread : threads) thread.join();
}

/// The descriptors 0, 1 and 2 are closed for good in these, so each runs in a process of its own.
class SpawnWithClosedStandardStreams : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  static void closeStandardStreams() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) ::close(descriptor);
  }
};

TEST_F(SpawnWithClosedStandardStreams, KeepsPipesOffTheirNumbers) {
  const auto usesHigherNumbers = [] {
    closeStandardStreams();
    const Pipe pipe = makePipe();
    const bool stayedClosed = ::fcntl(0, F_GETFD) < 0 && ::fcntl(1, F_GETFD) < 0 && ::fcntl(2, F_GETFD) < 0;
    const bool closeOnExec =
        ::fcntl(pipe.readEnd.number(), F_GETFD) == FD_CLOEXEC && ::fcntl(pipe.writeEnd.number(), F_GETFD) == FD_CLOEXEC;
    ::_exit(stayedClosed && closeOnExec && pipe.readEnd.number() > 2 && pipe.writeEnd.number() > 2 ? 0 : 1);
  };
  EXPECT_EXIT(usesHigherNumbers(), ::testing::ExitedWithCode(0), "");
}

TEST_F(SpawnWithClosedStandardStreams, KeepsThePidfdOffTheirNumbers) {
  const auto usesAHigherNumber = [] {
    closeStandardStreams();
    const SpawnedChild child = spawn(shell("exit 0"), {});
    const bool stayedClosed = ::fcntl(0, F_GETFD) < 0 && ::fcntl(1, F_GETFD) < 0 && ::fcntl(2, F_GETFD) < 0;
    ::waitpid(child.pid, nullptr, 0);
    ::_exit(stayedClosed ? 0 : 1);
  };
  EXPECT_EXIT(usesAHigherNumber(), ::testing::ExitedWithCode(0), "");
}

TEST_F(SpawnWithClosedStandardStreams, MapsDescriptorsThatAreStandardStreamsThemselves) {
  const auto mapsCrosswise = [](EndNotice notice) {
    closeStandardStreams();
    Pipe input = makePipe();
    Pipe output = makePipe();
    // The child's input arrives at number 1 and its output leaves by number 0; its errors stay where they are.
    ::dup2(output.writeEnd.number(), 0);
    ::dup2(input.readEnd.number(), 1);
    ::dup2(output.writeEnd.number(), 2);
    for (int descriptor = 0; descriptor <= 2; ++descriptor) ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    const SpawnedChild child = spawn(shell("cat; echo done >&2"), {1, 0, 2}, notice);
    output.writeEnd.close();
    ::close(0);
    ::close(2);
    [[maybe_unused]] const auto written = ::write(input.writeEnd.number(), "hello ", 6);
    input.writeEnd.close();
    const auto text = readToEnd(output.readEnd);
    ::waitpid(child.pid, nullptr, 0);
    ::_exit(text == "hello done\n" ? 0 : 1);
  };
  for (const auto notice : bothWays) EXPECT_EXIT(mapsCrosswise(notice), ::testing::ExitedWithCode(0), "");
}

TEST(MakePipe, TellsWhenThereIsNoDescriptorLeft) {
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  std::string text = "made";
  try {
    makePipe();
  } catch (const ProcessLaunchError& error) {
    text = error.description();
  }
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(text, "pipe: Too many open files");
}

}  // namespace ormel::detail
