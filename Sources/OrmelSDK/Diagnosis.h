#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Base/FailureCause.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// How `Ormel::diagnose` goes about it.
struct DiagnosisOptions {
  DiagnosisOptions() = default;

  /// How long vetting, start and handshake may take together. Ending a process that does not end by itself may take a
  /// second more.
  std::chrono::milliseconds timeout{10'000};
};

/// The whole set-up of the library, as `Ormel::diagnose` found it.
///
/// The values of secrets are masked in it: those of variables with KEY, TOKEN, SECRET, PASSWORD or the like in their
/// name, and logins in addresses. It can be shown to others.
///
/// *Thread safety*: a plain value.
struct Diagnosis {
  Diagnosis() = default;

  /// A path at which the server was looked for.
  struct Candidate {
    Candidate() = default;

    /// Why the path was looked at, such as "PATH" or "KESTRION_ORMEL_PATH".
    std::string origin;
    ExecutableFinding finding;
    /// Whether the search came to this one.
    bool isSelected = false;
  };

  /// Whether a server was started, and answered the handshake.
  bool isUsable = false;

  /// The paths that were tried, in their order; each once.
  std::vector<Candidate> candidates;

  /// The executable in use, or the bare name "ormel" if none was found.
  std::string executablePath;

  /// Whether its path was named by `OrmelOptions::ormelPathOverride`, so that nobody has to vouch for it.
  bool isNamed = false;

  /// The version that the server tells in its answer to the handshake; empty if it tells none.
  std::optional<std::string> version;

  /// The result of the handshake as it came; empty if there was none.
  std::optional<JSONValue> handshake;

  /// The environment that the server is started with.
  std::map<std::string, std::string> environment;

  /// The text of the error that a call would fail with, or nearly so; empty if the server is usable.
  std::string problem;

  /// The remedy; see `Error::advice`. For a usable server it may hold a remark, such as about a path
  /// that was named and passed over; else it is empty.
  std::string advice;

  /// The facts behind the problem, if they are known.
  std::shared_ptr<const FailureCause> cause;

  /// The standard error of the server: the last 4096 bytes at most, with secrets masked.
  std::string errorOutput;

  /// From the first look at the files to the end of the server process.
  std::chrono::nanoseconds duration{0};
};

}  // namespace ormel
