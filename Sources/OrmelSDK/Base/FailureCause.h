#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ormel {

/// The nature of a path, looked at as a program to start.
enum class ExecutableVerdict {
  usable,
  /// Nothing is there.
  noSuchFile,
  directory,
  /// A socket, a device or the like.
  notAFile,
  /// A file that this user may not execute.
  notExecutable,
  /// A program for another processor or another system.
  wrongArchitecture,
  /// A script, or a program, whose interpreter is not there or may not be executed.
  badInterpreter,
  /// The system would not let this process look.
  unreadable,
};

/// The word for a verdict, such as "no such file".
std::string_view executableVerdictText(ExecutableVerdict verdict) noexcept;

/// A path that was looked at as a program to start.
struct ExecutableFinding {
  std::string path;
  ExecutableVerdict verdict = ExecutableVerdict::usable;
  /// The `errno` of the system call that refused, or 0.
  int errorNumber = 0;
  /// For `noSuchFile` the innermost folder of the path that is there, for `wrongArchitecture` what the file is made
  /// for, for `badInterpreter` the interpreter as the file names it; else empty.
  std::string detail;

  friend bool operator==(const ExecutableFinding&, const ExecutableFinding&) = default;
};

/// How a server process ended.
struct ProcessEnd {
  enum class Reason {
    exit,
    signal,
    /// Another part of this process took the status.
    unknown,
  };
  Reason reason = Reason::unknown;
  /// The exit status or the number of the signal; 0 if it is not known.
  int status = 0;

  friend bool operator==(const ProcessEnd&, const ProcessEnd&) = default;
};

/// The facts behind a failure of the server or of its start, found when it failed. `Error::advice` is made of them.
///
/// Values of secrets that the library was given, as the API key and those in the environment of the server, are masked
/// in all texts that come from the server.
///
/// *Thread safety*: a plain value.
struct FailureCause {
  enum class Kind {
    /// No server was named, and none was found.
    noServer,
    /// The file that is named or was started is none that the system can run.
    unusableExecutable,
    /// A server was found that nobody has vouched for.
    unvettedExecutable,
    /// The path of the executable would be taken for something else.
    unstartablePath,
    /// The system refused to start a process.
    launchRefused,
    /// The process ended while somebody waited for it.
    serverEnded,
    /// A line of the server's standard output is no message.
    garbageOutput,
    /// The server did not answer the handshake in time.
    handshakeTimedOut,
  };

  explicit FailureCause(Kind ofKind) : kind(ofKind) {}

  Kind kind;
  /// The file that was to be started, or the one that was found; empty if none was found.
  std::string executablePath;
  /// For `unusableExecutable` the file at fault: the one named, or the one that was started.
  std::optional<ExecutableFinding> finding;
  /// The name of the option or variable whose path was passed over; empty if none was.
  std::string namedBy;
  /// The directories of `PATH`, colons between them, for `noServer`.
  std::string searchPath;
  /// Why the executable was not trusted.
  std::string vettingReason;
  /// Whether it was the application's own assessment that did not trust it.
  bool isOwnAssessment = false;
  /// The `errno` of the refused launch, or 0.
  int errorNumber = 0;
  /// How the process ended; empty if it had closed its output and its end was not noticed in time.
  std::optional<ProcessEnd> end;
  /// Whether the process wrote to its standard error before.
  bool hadErrorOutput = false;
  /// Whether the handshake was over.
  bool wasInitialized = false;
  /// At most the first 256 bytes of the line that is no message; invalid UTF-8 in it has been repaired.
  std::string firstBytes;
  /// How long the handshake was waited for.
  std::chrono::nanoseconds waited{0};
};

namespace detail {

/// A text of foreign origin for a person's eyes, in double quotes and on one line: control characters, invalid UTF-8
/// and characters that change the direction of writing are escaped. Longer texts are cut, with "..." behind them.
std::string quotedForPeople(std::string_view text, std::size_t limit = 256);

/// The advice for a person: what was looked for, what was found, what to do next.
std::string adviceFor(const FailureCause& cause);

}  // namespace detail

}  // namespace ormel
