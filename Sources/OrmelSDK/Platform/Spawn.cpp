#include "OrmelSDK/Platform/Spawn.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <iterator>
#include <utility>

#include "OrmelSDK/Platform/ClonedChild.h"
#include "OrmelSDK/Platform/FailureInjection.h"
#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/Pidfd.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"

#if defined(__APPLE__)
#include <crt_externs.h>
#else
extern char** environ;  // NOLINT(readability-redundant-declaration): only some systems' headers declare it
#endif

namespace ormel::detail {

namespace {

char** inheritedEnvironment() {
#if defined(__APPLE__)
  return *_NSGetEnviron();
#else
  return environ;
#endif
}

/// Turns the result of a step of the start into a failure.
class Checker {
 public:
  explicit Checker(const std::string& executable) : executable_(executable) {}
  void operator()(int result) const {
    if (result != 0) throw ProcessLaunchError(executable_, result);
  }

 private:
  const std::string& executable_;
};

/// The descriptors that become standard streams, each above those: one that is a standard stream itself would be
/// overwritten by an earlier mapping, or keep its close-on-exec flag when mapped onto itself.
class StreamSources {
 public:
  StreamSources(const Checker& check, const StandardStreams& streams)
      : check_(check), numbers_{above(streams.input, 0), above(streams.output, 1), above(streams.error, 2)} {}

  int operator[](std::size_t stream) const { return numbers_.at(stream); }

 private:
  int above(int descriptor, std::size_t stream) {
    if (descriptor == StandardStreams::inherited || descriptor > STDERR_FILENO) return descriptor;
    auto& copy = copies_.at(stream);
    copy = FileDescriptor::duplicate(descriptor);
    if (!copy.isOpen()) check_(errno);
    return copy.number();
  }

  const Checker& check_;
  std::array<FileDescriptor, 3> copies_;
  std::array<int, 3> numbers_;
};

/// The descriptor operations that the child performs before it becomes the program.
class FileActions {
 public:
  FileActions(const Checker& check, const ChildPlan& plan) : check_(check) {
    check_(posix_spawn_file_actions_init(&actions_));
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) map(plan.streams[stream], stream);
  }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  const posix_spawn_file_actions_t* get() const noexcept { return &actions_; }

 private:
  void map(int descriptor, int standardStream) {
    if (descriptor == StandardStreams::inherited) return inherit(standardStream);
    check_(posix_spawn_file_actions_adddup2(&actions_, descriptor, standardStream));
  }

  void inherit([[maybe_unused]] int standardStream) {
#if defined(__APPLE__)
    if (::fcntl(standardStream, F_GETFD) < 0) return;
    check_(posix_spawn_file_actions_addinherit_np(&actions_, standardStream));
#endif
  }

  const Checker& check_;
  posix_spawn_file_actions_t actions_;
};

class Attributes {
 public:
  explicit Attributes(const Checker& check) {
    check(posix_spawnattr_init(&attributes_));
    sigset_t everySignal;
    sigfillset(&everySignal);
    // These two have no other disposition than the default.
    sigdelset(&everySignal, SIGKILL);
    sigdelset(&everySignal, SIGSTOP);
    sigset_t none;
    sigemptyset(&none);
    // In a process group of its own, since a terminal's Ctrl-C is for the application, which ends its children itself.
    int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP;
#if defined(__APPLE__)
    flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#endif
    posix_spawnattr_setsigdefault(&attributes_, &everySignal);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
  }
  ~Attributes() { posix_spawnattr_destroy(&attributes_); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

  const posix_spawnattr_t* get() const noexcept { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

/// The null-terminated array of C strings that the system takes. A text with a zero byte in it would silently
/// become a shorter one, so it is refused.
class CStrings {
 public:
  explicit CStrings(const Checker& check) : check_(check) {}
  void add(const std::string& text) {
    if (text.find('\0') != std::string::npos) check_(EINVAL);
    strings_.insert(strings_.end() - 1, const_cast<char*>(text.c_str()));
  }
  void add(const std::vector<std::string>& texts) {
    strings_.reserve(strings_.size() + texts.size());
    for (const auto& text : texts) add(text);
  }
  char* const* get() const noexcept { return strings_.data(); }

 private:
  const Checker& check_;
  std::vector<char*> strings_{nullptr};
};

std::vector<std::string> environmentEntries(const std::map<std::string, std::string>& variables) {
  std::vector<std::string> entries;
  entries.reserve(variables.size());
  for (const auto& [name, value] : variables) entries.emplace_back(name).append("=").append(value);
  return entries;
}

pid_t spawnWithoutPidfd(const Checker& check, const ChildPlan& plan) {
  const FileActions actions(check, plan);
  const Attributes attributes(check);
  pid_t pid = 0;
  check(posix_spawn(&pid, plan.executable, actions.get(), attributes.get(), plan.arguments, plan.environment));
  return pid;
}

SpawnedChild spawnAsPlanned(const Checker& check, const ChildPlan& plan, EndNotice notice) {
  SpawnedChild child;
  if (notice == EndNotice::automatic) {
    if (auto cloned = cloneChild(plan)) return *std::move(cloned);
  }
  child.pid = spawnWithoutPidfd(check, plan);
  if (notice == EndNotice::automatic) child.pidfd = openPidfd(child.pid);
  return child;
}

}  // namespace

SpawnedChild spawn(const LaunchSettings& settings, const StandardStreams& streams, EndNotice notice) {
  const Checker check(settings.executable);
  CStrings arguments(check);
  arguments.add(settings.executable);
  arguments.add(settings.arguments);
  const auto variables = settings.environment ? environmentEntries(*settings.environment) : std::vector<std::string>();
  CStrings environment(check);
  environment.add(variables);
  const StreamSources sources(check, streams);

  check(injectedFailure(SystemCall::spawn));
  ChildPlan plan;
  plan.executable = settings.executable.c_str();
  plan.arguments = arguments.get();
  plan.environment = settings.environment ? environment.get() : inheritedEnvironment();
  for (std::size_t stream = 0; stream < std::size(plan.streams); ++stream) plan.streams[stream] = sources[stream];
  return spawnAsPlanned(check, plan, notice);
}

}  // namespace ormel::detail
