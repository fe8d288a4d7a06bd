#pragma once

#include <sys/types.h>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <thread>
#include <vector>

namespace ormel::detail {

/// The threads that run all asynchronous work of the library: one small pool per process.
///
/// All signals are blocked in its threads: a write to a dead peer is an error code there and never a SIGPIPE, and
/// the application's signal handlers never run on them. The pool starts on first use. Its threads are joined when the
/// process ends; work posted later is accepted but never runs. A thread of the pool may end the process.
///
/// *Thread safety*: all members may be called from any thread.
///
/// *Object lifetimes*: never destroyed, so that static objects of the application may use the library until the end.
class IORuntime {
 public:
  static IORuntime& shared();

  /// The context of the pool: posted work runs on any of its threads, in no order, and must not block.
  asio::io_context& context() noexcept { return context_; }

  IORuntime(const IORuntime&) = delete;
  IORuntime& operator=(const IORuntime&) = delete;

 private:
  /// Ends the threads of a runtime when it is destroyed.
  class Ending;

  IORuntime();
  ~IORuntime() = default;

  void endThreads();

  const pid_t process_;
  asio::io_context context_;
  asio::executor_work_guard<asio::io_context::executor_type> work_;
  std::vector<std::thread> threads_;
};

}  // namespace ormel::detail
