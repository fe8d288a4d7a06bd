#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Support/Descriptor.h"

namespace ormel::testing {

struct ChildOptions {
  ChildOptions() = default;

  std::vector<std::string> arguments;
  /// The whole environment, as "NAME=value".
  std::vector<std::string> environment;
  /// Standard streams (0, 1, 2) that the child starts without.
  std::vector<int> closedStreams;
  /// The child's own ends of its standard streams do not block.
  bool nonBlockingStreams = false;
  /// The child inherits that SIGPIPE is ignored.
  bool ignoresBrokenPipe = false;
};

/// How a child ended: by itself with a status, or by a signal.
struct ChildEnd {
  std::optional<int> status;
  std::optional<int> signal;
  struct rusage usage{};
};

/// A real child process with pipes on its standard streams. Destruction kills and reaps it.
///
/// From the first child on this process ignores SIGPIPE, so that a child's death is an error of the write to it.
class ChildProgram {
 public:
  ChildProgram(const std::string& executable, const ChildOptions& options);
  ChildProgram(const ChildProgram&) = delete;
  ChildProgram& operator=(const ChildProgram&) = delete;
  ~ChildProgram();

  pid_t processID() const noexcept { return processID_; }
  int inputDescriptor() const noexcept { return input_.number(); }
  int outputDescriptor() const noexcept { return output_.number(); }

  void write(std::string_view bytes) { writeAll(input_.number(), bytes); }
  void closeInput() noexcept { input_.reset(); }
  void closeOutput() noexcept { output_.reset(); }

  /// The next line of standard output with its line feed; what is left before the end when there is none.
  std::string readLine();
  std::string readRestOfOutput();
  std::string readErrors() { return readToEnd(errors_.number()); }

  /// Waits for the child's end. A child that does not end is killed, and the call fails.
  ChildEnd wait();

 private:
  pid_t processID_ = -1;
  Descriptor input_;
  Descriptor output_;
  Descriptor errors_;
  /// Ends when the child does, whatever it did to its standard streams.
  Descriptor life_;
  std::string pendingOutput_;
  std::size_t scanned_ = 0;
};

}  // namespace ormel::testing
