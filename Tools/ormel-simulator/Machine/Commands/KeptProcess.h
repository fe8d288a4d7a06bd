#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "ormel-simulator/Machine/Commands/CommandLaunch.h"

namespace ormel::simulator {

/// How a process ended.
struct ProcessEnd {
  /// 128 and the signal's number after a signal, as shells have it; nothing where nobody can tell.
  std::optional<int> exitCode;
};

/// A running program with its streams, and its keeper, who sees to it that nothing outlives this object.
class KeptProcess {
 public:
  /// Returns when the program runs. Fails with `Refusal` if it cannot be run.
  explicit KeptProcess(const CommandLaunch& launch);
  KeptProcess(const KeptProcess&) = delete;
  KeptProcess& operator=(const KeptProcess&) = delete;
  /// Ends the program and all that it has started, and waits for it.
  ~KeptProcess();

  /// Our ends of its streams; none of them blocks. A terminal is both input and output, and a program without input has
  /// none.
  detail::FileDescriptor input;
  detail::FileDescriptor output;
  detail::FileDescriptor error;

  /// Readable when `takeEnd` has something to tell.
  int control() const noexcept { return control_.number(); }

  /// How it has ended, if it has: then nothing that it started runs any more. Does not wait.
  std::optional<ProcessEnd> takeEnd();

  /// To its process group, if it still runs.
  void signal(int number) noexcept;

 private:
  void start(const CommandLaunch& launch, const detail::FileDescriptor& keeperControl,
             const detail::FileDescriptor& itsInput, const detail::FileDescriptor& itsOutput,
             const detail::FileDescriptor& itsError);
  void awaitStart(const CommandLaunch& launch);

  detail::FileDescriptor control_;
};

}  // namespace ormel::simulator
