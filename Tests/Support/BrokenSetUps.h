#pragma once

#include <sys/stat.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Base/FailureCause.h"
#include "OrmelSDK/Platform/HostProcess.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::testing {

/// The value of the secret that the servers of the set-ups are given in ORMEL_API_KEY.
inline constexpr const char* setUpSecret = "sk-nobody-may-read-this";

/// A way in which a set-up is broken, made of real files.
struct BrokenSetUp {
  const char* name;
  /// Makes the files, and gives the path to name; none is named if it is empty. The directory is the user's home; its
  /// folder "bin" is all of `PATH`, so what is in there is found.
  std::function<std::string(const TemporaryDirectory&)> make;
  FailureCause::Kind kind;
  /// Pieces of the advice: by the real cause, and by nothing else.
  std::vector<std::string> advice;
  /// The server never answers, so only what is bounded in time comes to an end.
  bool hangs = false;
};

/// The header of a program for the other one of two processors, and nothing behind it.
inline std::string foreignProgram() {
  const bool isX64 = detail::hostPlatform() == detail::HostPlatform::linuxX64;
  std::string header(64, '\0');
  header.replace(0, 7,
                 "\x7f"
                 "ELF\x02\x01\x01");
  header[16] = 2;
  header[18] = static_cast<char>(isX64 ? 183 : 62);
  header[20] = 1;
  return header;
}

inline std::string foreignProcessor() {
  return detail::hostPlatform() == detail::HostPlatform::linuxX64 ? "aarch64" : "x86_64";
}

inline std::vector<BrokenSetUp> brokenSetUps() {
  using Kind = FailureCause::Kind;
  using Directory = const TemporaryDirectory&;
  const auto script = [](std::string commands) {
    return [commands](Directory home) { return home.addExecutable("server", "#!/bin/sh\n" + commands + "\n"); };
  };
  return {
      {"no server", [](Directory) { return std::string(); }, Kind::noServer, {"Found: none.", "install", "PATH"}},
      {"mistyped path",
       [](Directory home) { return home.addExecutable("apps/ormel") + "l"; },
       Kind::unusableExecutable,
       {"/apps/ormell\"", "Found: no such file", "/apps\"", "spelling"}},
      {"mistyped folder",
       [](Directory home) { return home / "aps/ormel"; },
       Kind::unusableExecutable,
       {"/aps/ormel\"", "Found: no such file", "spelling"}},
      {"mistyped path, and another program is found",
       [](Directory home) {
         home.addExecutable("bin/ormel");
         return home.addExecutable("apps/ormel") + "l";
       },
       Kind::unusableExecutable,
       {"/apps/ormell\"", "Found: no such file", "/bin/ormel\"", "nobody has vouched"}},
      {"directory",
       [](Directory home) { return home.addDirectory("apps"); },
       Kind::unusableExecutable,
       {"Found: a directory", "the path of the program itself"}},
      {"no execute bit",
       [](Directory home) { return home.addFile("apps/ormel", "#!/bin/sh\n"); },
       Kind::unusableExecutable,
       {"may not execute", "chmod +x"}},
      {"pipe",
       [](Directory home) {
         ::mkfifo((home / "pipe").c_str(), 0700);
         return home / "pipe";
       },
       Kind::unusableExecutable,
       {"is no file"}},
      {"unvetted find",
       [](Directory home) {
         home.addExecutable("bin/ormel");
         return std::string();
       },
       Kind::unvettedExecutable,
       {"/bin/ormel\", which was found and not named", "nobody", "name it"}},
      {"wrong architecture",
       [](Directory home) { return home.addExecutable("server", foreignProgram()); },
       Kind::unusableExecutable,
       {"a program for Linux on " + foreignProcessor(), "made for this machine"}},
      {"program of another system",
       [](Directory home) { return home.addExecutable("server", "MZ\x90"); },
       Kind::unusableExecutable,
       {"a program for Windows"}},
      {"bad interpreter",
       [](Directory home) { return home.addExecutable("server", "#!/nowhere/interpreter -x\n"); },
       Kind::unusableExecutable,
       {"interpreter \"/nowhere/interpreter\" is not there"}},
      {"carriage return behind the interpreter",
       [](Directory home) { return home.addExecutable("server", "#!/bin/sh\r\nexit 0\r\n"); },
       Kind::unusableExecutable,
       {"interpreter \"/bin/sh\\r\" is not there", "carriage return"}},
      {"interpreter that is not in PATH",
       [](Directory home) { return home.addExecutable("server", "#!/usr/bin/env no-such-interpreter\n"); },
       Kind::unusableExecutable,
       {"interpreter \"no-such-interpreter\" is not there"}},
      {"death with a status",
       script("exit 3"),
       Kind::serverEnded,
       {"it ended with exit status 3, without a word", "run it by hand"}},
      {"death with last words",
       script("echo it is over >&2; exit 4"),
       Kind::serverEnded,
       {"it ended with exit status 4; its last words are above", "run it by hand"}},
      {"death by SIGKILL", script("kill -KILL $$"), Kind::serverEnded, {"signal 9 (SIGKILL)", "memory"}},
      {"crash", script("kill -SEGV $$"), Kind::serverEnded, {"signal 11 (SIGSEGV)", "crashed"}},
      {"garbage",
       script("printf 'Welcome\\033[31m \"friend\"\\200\\n'; read line"),
       Kind::garbageOutput,
       {"begins \"Welcome\\x1b[31m \\\"friend\\\"�\"", "standard output is for messages alone"}},
      {"garbage that is JSON", script("echo '[1]'; read line"), Kind::garbageOutput, {"begins \"[1]\""}},
      {"garbage with a secret in it",
       script("echo \"key $ORMEL_API_KEY\"; read line"),
       Kind::garbageOutput,
       {"begins \"key ***\""}},
      {"hanging handshake",
       script("/bin/sleep 1000 & echo $! >>pids; wait"),
       Kind::handshakeTimedOut,
       {"did not answer for", "overloaded"},
       true},
      {"handshake that hangs and does not let itself be ended",
       script("trap '' TERM; while :; do /bin/sleep 1; done"),
       Kind::handshakeTimedOut,
       {"did not answer for"},
       true},
  };
}

}  // namespace ormel::testing
