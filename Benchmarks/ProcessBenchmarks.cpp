#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <future>

#include "OrmelSDK/Platform/SystemProcessLauncher.h"

extern char** environ;

namespace {

using ormel::detail::LaunchSettings;
using ormel::detail::SystemProcessLauncher;
using ormel::detail::Termination;

constexpr const char* looker = "/usr/bin/env";
constexpr const char* program = "/bin/true";

/// The least that the system can do: start a program that starts another one, and reap it.
void startAndReapBare(benchmark::State& state) {
  char* const arguments[] = {const_cast<char*>(looker), const_cast<char*>(program), nullptr};
  for (auto _ : state) {
    pid_t pid = 0;
    if (posix_spawn(&pid, looker, nullptr, nullptr, arguments, environ) != 0) std::abort();
    int status = 0;
    waitpid(pid, &status, 0);
    benchmark::DoNotOptimize(status);
  }
}
BENCHMARK(startAndReapBare)->Unit(benchmark::kMicrosecond)->UseRealTime();

/// The same with three pipes, and the end told by the handler.
void startAndReapChild(benchmark::State& state) {
  LaunchSettings settings;
  settings.executable = looker;
  settings.arguments = {program};
  auto& launcher = SystemProcessLauncher::shared();
  for (auto _ : state) {
    std::promise<Termination> ended;
    const auto child =
        launcher.launch(settings, [&ended](const Termination& termination) { ended.set_value(termination); });
    benchmark::DoNotOptimize(ended.get_future().get());
  }
}
BENCHMARK(startAndReapChild)->Unit(benchmark::kMicrosecond)->UseRealTime();

/// One line to a child and back.
void roundTripThroughChild(benchmark::State& state) {
  LaunchSettings settings;
  settings.executable = "/bin/cat";
  const auto child = SystemProcessLauncher::shared().launch(settings, nullptr);
  std::promise<void>* waiting = nullptr;
  ormel::detail::PipeReadHandlers handlers;
  handlers.onChunk = [&waiting](const ormel::detail::ByteBuffer&) { waiting->set_value(); };
  child->output()->start(std::move(handlers));
  const std::string line(252, 'x');
  for (auto _ : state) {
    std::promise<void> echoed;
    waiting = &echoed;
    child->write(line + "\n");
    echoed.get_future().get();
  }
}
BENCHMARK(roundTripThroughChild)->Unit(benchmark::kMicrosecond)->UseRealTime();

/// Everything that a child writes, in bytes a second.
void readFlood(benchmark::State& state) {
  LaunchSettings settings;
  settings.executable = "/usr/bin/head";
  settings.arguments = {"-c", "268435456", "/dev/zero"};
  for (auto _ : state) {
    std::promise<void> ended;
    const auto child = SystemProcessLauncher::shared().launch(settings, nullptr);
    ormel::detail::PipeReadHandlers handlers;
    handlers.onChunk = [](const ormel::detail::ByteBuffer& chunk) { benchmark::DoNotOptimize(chunk.data()); };
    handlers.onEnd = [&ended] { ended.set_value(); };
    child->output()->start(std::move(handlers));
    ended.get_future().get();
  }
  state.SetBytesProcessed(state.iterations() * 268435456);
}
BENCHMARK(readFlood)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
