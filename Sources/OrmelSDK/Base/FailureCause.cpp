#include "OrmelSDK/Base/FailureCause.h"

#include <errno.h>
#include <signal.h>

#include <array>
#include <system_error>
#include <utility>

namespace ormel {

namespace {

using detail::quotedForPeople;

/// The three parts of an advice, each a line of its own.
std::string advice(std::string_view lookedFor, std::string_view found, std::string_view next) {
  std::string text = "Looked for: ";
  text.append(lookedFor).append("\nFound: ").append(found).append("\nNext: ").append(next);
  return text;
}

std::string systemText(int errorNumber) { return std::generic_category().message(errorNumber); }

std::string namedServer(const FailureCause& cause, const std::string& path) {
  std::string text = "the server " + quotedForPeople(path);
  if (!cause.namedBy.empty()) text += ", which " + cause.namedBy + " names";
  return text + ".";
}

std::string findingText(const ExecutableFinding& finding) {
  switch (finding.verdict) {
    case ExecutableVerdict::noSuchFile:
      return finding.detail.empty() ? "no such file."
                                    : "no such file. The innermost folder of the path that is there is " +
                                          quotedForPeople(finding.detail) + ".";
    case ExecutableVerdict::directory:
      return "a directory of that name, which is no program.";
    case ExecutableVerdict::notAFile:
      return "something of that name that is no file, and so no program.";
    case ExecutableVerdict::notExecutable:
      return "a file that this user may not execute.";
    case ExecutableVerdict::wrongArchitecture:
      return "a program for " + finding.detail + ", which this machine does not run.";
    case ExecutableVerdict::badInterpreter:
      return "a file whose interpreter " + quotedForPeople(finding.detail) + " is not there, or may not be executed.";
    case ExecutableVerdict::unreadable:
      return "nothing, since the system would not say what is there: " + systemText(finding.errorNumber) + ".";
    case ExecutableVerdict::usable:
      break;
  }
  return "a program.";
}

std::string findingRemedy(const ExecutableFinding& finding, const std::string& namedBy) {
  const std::string place = namedBy.empty() ? "name the right one" : "correct the path in " + namedBy;
  switch (finding.verdict) {
    case ExecutableVerdict::noSuchFile:
      return "look for a spelling mistake, and " + place + ".";
    case ExecutableVerdict::directory:
      return place + ": the path of the program itself, which may lie in this directory.";
    case ExecutableVerdict::notExecutable:
      return "if this is the server, allow it with: chmod +x " + quotedForPeople(finding.path) +
             " (if it has that bit, the folders above it or the way its disk is mounted forbid it). Else " + place +
             ".";
    case ExecutableVerdict::wrongArchitecture:
      return "install the server that is made for this machine, or " + place + ".";
    case ExecutableVerdict::badInterpreter:
      return "install the interpreter, or correct the first line of the file if it is a script (a carriage return at "
             "its end counts as part of the name), or " +
             place + ".";
    case ExecutableVerdict::unreadable:
      return "ask for access to the folders above it, or " + place + ".";
    case ExecutableVerdict::notAFile:
    case ExecutableVerdict::usable:
      break;
  }
  return place + ".";
}

std::string noServerAdvice(const FailureCause& cause) {
  std::string places = "a program \"ormel\" in the application's own resources, in the directories of PATH";
  places += cause.searchPath.empty() ? " (which is empty)" : " (" + quotedForPeople(cause.searchPath, 400) + ")";
  places += ", and in the usual folders of installations.";
  return advice(places, "none.",
                "install the ormel server, or name the one that you have: by OrmelOptions::ormelPathOverride, by "
                "the option --server of the programs, or by the variable KESTRION_ORMEL_PATH.");
}

std::string unusableExecutableAdvice(const FailureCause& cause) {
  const ExecutableFinding& finding = *cause.finding;
  std::string found = findingText(finding);
  std::string next = findingRemedy(finding, cause.namedBy);
  if (!cause.executablePath.empty() && cause.executablePath != finding.path) {
    found += " The search went on, and came to " + quotedForPeople(cause.executablePath) +
             ", which is not started because nobody has vouched for it.";
  }
  return advice(namedServer(cause, finding.path), found, next);
}

std::string unvettedAdvice(const FailureCause& cause) {
  const std::string path = quotedForPeople(cause.executablePath);
  if (cause.isOwnAssessment) {
    return advice("somebody who vouches for the server " + path + ".",
                  "the application's own assessment (OrmelOptions::executableTrustAssessment) rejects it: " +
                      quotedForPeople(cause.vettingReason, 400) + ".",
                  "have the assessment accept this program, or name another one.");
  }
  const std::string chosen = cause.namedBy.empty() ? "was found and not named" : cause.namedBy + " names";
  return advice("somebody who vouches for the server " + path + ", which " + chosen + ".",
                "nobody: the system's tools for that say " + quotedForPeople(cause.vettingReason, 400) + ".",
                "if you know this program and trust it, name it, which counts as your word for it: by "
                "OrmelOptions::ormelPathOverride, or by the option --server of the programs. An application can vouch "
                "for it with OrmelOptions::executableTrustAssessment. Else remove it.");
}

std::string unstartablePathAdvice(const FailureCause& cause) {
  return advice(namedServer(cause, cause.executablePath),
                "a path that cannot be handed to the system's program starter as it is.",
                "name the server by a path that begins with \"/\" and has no \"=\" in it, if need be by that of a "
                "symbolic link.");
}

std::string launchRemedy(int errorNumber) {
  switch (errorNumber) {
    case E2BIG:
      return "pass fewer or smaller variables and config overrides: together they are larger than the system allows.";
    case EAGAIN:
      return "end some processes, or raise the limit on their number (ulimit -u), and try again.";
    case EMFILE:
    case ENFILE:
      return "close some files, or raise the limit on their number (ulimit -n), and try again.";
    case ENOMEM:
      return "free some memory, and try again.";
    case EINVAL:
      return "look for a zero byte in the path, in the variables and in the config overrides: none may have one.";
    case ENOENT:
    case EACCES:
    case EPERM:
      return "see that /usr/bin/env, by which the server is started, is there and may be executed.";
    default:
      return "try again; if it stays so, run ormel-doctor.";
  }
}

std::string launchRefusedAdvice(const FailureCause& cause) {
  const std::string told = cause.errorNumber == 0 ? "the text above tells why" : systemText(cause.errorNumber);
  return advice("room for a process that runs the server " + quotedForPeople(cause.executablePath) + ".",
                "the system refused it: " + told + ".", launchRemedy(cause.errorNumber));
}

std::string signalName(int signal) {
  constexpr std::array<std::pair<int, std::string_view>, 11> names = {{{SIGABRT, "SIGABRT"},
                                                                       {SIGBUS, "SIGBUS"},
                                                                       {SIGFPE, "SIGFPE"},
                                                                       {SIGHUP, "SIGHUP"},
                                                                       {SIGILL, "SIGILL"},
                                                                       {SIGINT, "SIGINT"},
                                                                       {SIGKILL, "SIGKILL"},
                                                                       {SIGPIPE, "SIGPIPE"},
                                                                       {SIGSEGV, "SIGSEGV"},
                                                                       {SIGSYS, "SIGSYS"},
                                                                       {SIGTERM, "SIGTERM"}}};
  std::string text = "signal " + std::to_string(signal);
  for (const auto& [number, name] : names) {
    if (number == signal) text.append(" (").append(name).append(")");
  }
  return text;
}

std::string endText(const std::optional<ProcessEnd>& end) {
  if (!end) return "it closed its output and went on running";
  if (end->reason == ProcessEnd::Reason::exit) return "it ended with exit status " + std::to_string(end->status);
  if (end->reason == ProcessEnd::Reason::signal) return "it was ended by " + signalName(end->status);
  return "it ended, and another part of this process took its status";
}

std::string runByHand(const FailureCause& cause) {
  return "run it by hand and see what it says: " + quotedForPeople(cause.executablePath) +
         " app-server --listen stdio://";
}

std::string endRemedy(const FailureCause& cause) {
  const bool isSignal = cause.end && cause.end->reason == ProcessEnd::Reason::signal;
  if (isSignal && cause.end->status == SIGKILL) {
    return "find out who kills it: often the system does when memory runs out (its log tells), or a limit of a "
           "container.";
  }
  if (isSignal && cause.end->status != SIGTERM && cause.end->status != SIGINT && cause.end->status != SIGHUP) {
    return "the server crashed: tell its makers, with its version and this signal; or try another version.";
  }
  return runByHand(cause) + (cause.hadErrorOutput ? "" : ". If it is no ormel server, name the right one.");
}

std::string serverEndedAdvice(const FailureCause& cause) {
  std::string found = endText(cause.end);
  found += cause.hadErrorOutput ? "; its last words are above." : ", without a word on its standard error.";
  return advice((cause.wasInitialized ? "an answer of the running server " : "the handshake of the server ") +
                    quotedForPeople(cause.executablePath) + ".",
                found, endRemedy(cause));
}

std::string garbageAdvice(const FailureCause& cause) {
  constexpr std::size_t shownBytes = 80;
  return advice(
      "a JSON message on the standard output of the server " + quotedForPeople(cause.executablePath) + ".",
      "a line that begins " + quotedForPeople(cause.firstBytes, shownBytes) + ".",
      "see that this is the server and not another program; if it is a script that starts the server, have it "
      "print to its standard error, since its standard output is for messages alone. To see all of it, " +
          runByHand(cause));
}

std::string secondsText(std::chrono::nanoseconds duration) {
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(duration).count();
  if (milliseconds % 1000 != 0) return std::to_string(milliseconds) + " milliseconds";
  return std::to_string(milliseconds / 1000) + (milliseconds == 1000 ? " second" : " seconds");
}

std::string handshakeAdvice(const FailureCause& cause) {
  return advice("the answer of the server " + quotedForPeople(cause.executablePath) + " to the handshake.",
                "a process that runs and did not answer for " + secondsText(cause.waited) + ".",
                "see that this is the server and not another program, and whether the machine is overloaded or the "
                "server waits for a disk or a network. To look at it, " +
                    runByHand(cause));
}

}  // namespace

std::string_view executableVerdictText(ExecutableVerdict verdict) noexcept {
  constexpr std::array<std::string_view, 8> texts = {
      "usable",         "no such file",       "a directory",     "not a file",
      "not executable", "wrong architecture", "bad interpreter", "unreadable",
  };
  return texts[static_cast<std::size_t>(verdict)];
}

std::string detail::adviceFor(const FailureCause& cause) {
  switch (cause.kind) {
    case FailureCause::Kind::noServer:
      return noServerAdvice(cause);
    case FailureCause::Kind::unusableExecutable:
      return unusableExecutableAdvice(cause);
    case FailureCause::Kind::unvettedExecutable:
      return unvettedAdvice(cause);
    case FailureCause::Kind::unstartablePath:
      return unstartablePathAdvice(cause);
    case FailureCause::Kind::launchRefused:
      return launchRefusedAdvice(cause);
    case FailureCause::Kind::serverEnded:
      return serverEndedAdvice(cause);
    case FailureCause::Kind::garbageOutput:
      return garbageAdvice(cause);
    case FailureCause::Kind::handshakeTimedOut:
      break;
  }
  return handshakeAdvice(cause);
}

}  // namespace ormel
