#include "Support/ChildProgram.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace ormel::testing {

namespace {

// A number that no descriptor of the small programs under test gets by itself.
constexpr int lifeInChild = 100;

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

class SpawnActions {
 public:
  SpawnActions() { ::posix_spawn_file_actions_init(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }

  void duplicate(const Descriptor& from, int to) { ::posix_spawn_file_actions_adddup2(&actions_, from.number(), to); }
  void close(int descriptor) { ::posix_spawn_file_actions_addclose(&actions_, descriptor); }
  const posix_spawn_file_actions_t* get() const noexcept { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

class SpawnAttributes {
 public:
  explicit SpawnAttributes(bool ignoresBrokenPipe) {
    ::posix_spawnattr_init(&attributes_);
    sigset_t defaults;
    sigemptyset(&defaults);
    if (!ignoresBrokenPipe) sigaddset(&defaults, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes_, &defaults);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
  }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }

  const posix_spawnattr_t* get() const noexcept { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

}  // namespace

ChildProgram::ChildProgram(const std::string& executable, const ChildOptions& options) {
  ::signal(SIGPIPE, SIG_IGN);
  Pipe input = makePipe();
  Pipe output = makePipe();
  Pipe errors = makePipe();
  Pipe life = makePipe();
  setNonBlocking(input.writeEnd.number(), true);
  if (options.nonBlockingStreams) {
    for (const auto* end : {&input.readEnd, &output.writeEnd, &errors.writeEnd}) setNonBlocking(end->number(), true);
  }

  SpawnActions actions;
  actions.duplicate(input.readEnd, STDIN_FILENO);
  actions.duplicate(output.writeEnd, STDOUT_FILENO);
  actions.duplicate(errors.writeEnd, STDERR_FILENO);
  actions.duplicate(life.writeEnd, lifeInChild);
  for (const int stream : options.closedStreams) actions.close(stream);

  const SpawnAttributes attributes(options.ignoresBrokenPipe);
  std::vector<std::string> arguments = options.arguments;
  arguments.insert(arguments.begin(), executable);
  std::vector<std::string> environment = options.environment;
  const int error = ::posix_spawn(&processID_, executable.c_str(), actions.get(), attributes.get(),
                                  pointersTo(arguments).data(), pointersTo(environment).data());
  if (error != 0) throw std::system_error(error, std::generic_category(), "cannot start " + executable);
  input_ = std::move(input.writeEnd);
  output_ = std::move(output.readEnd);
  errors_ = std::move(errors.readEnd);
  life_ = std::move(life.readEnd);
}

ChildProgram::~ChildProgram() {
  if (processID_ < 0) return;
  ::kill(processID_, SIGKILL);
  while (::waitpid(processID_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::string ChildProgram::readLine() {
  for (;;) {
    const std::size_t lineFeed = pendingOutput_.find('\n', scanned_);
    if (lineFeed != std::string::npos) {
      std::string line = pendingOutput_.substr(0, lineFeed + 1);
      pendingOutput_.erase(0, lineFeed + 1);
      scanned_ = 0;
      return line;
    }
    scanned_ = pendingOutput_.size();
    if (!readSome(output_.number(), pendingOutput_)) return readRestOfOutput();
  }
}

std::string ChildProgram::readRestOfOutput() {
  std::string rest = std::exchange(pendingOutput_, {});
  scanned_ = 0;
  return rest + readToEnd(output_.number());
}

ChildEnd ChildProgram::wait() {
  readToEnd(life_.number());
  ChildEnd end;
  int status = 0;
  while (::wait4(processID_, &status, 0, &end.usage) < 0) {
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "wait4");
  }
  processID_ = -1;
  if (WIFEXITED(status)) end.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) end.signal = WTERMSIG(status);
  return end;
}

}  // namespace ormel::testing
