#include "OrmelSDK/AppServerRun/Launch/OrmelExecutableTrustPolicy.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/Launch/SystemTrustCommand.h"
#include "OrmelSDK/Text/CanonicalText.h"
#include "OrmelSDK/Text/LowercasedText.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel {

namespace {

constexpr const char* signatureTool = "/usr/bin/codesign";
constexpr const char* gatekeeperTool = "/usr/sbin/spctl";
constexpr double systemCommandTimeoutSeconds = 10;

constexpr std::array<std::string_view, 5> refusals = {"malware", "malicious", "revoked", "blocked", "xprotect"};

OrmelExecutableTrustAssessment assessOrThrow(const std::string& path, const OrmelExecutableTrustCommandRunner& run) {
  const auto verified = run(signatureTool, {"--verify", "--strict", path});
  if (verified.exitCode != 0) {
    std::string reason(detail::trimmed(verified.output));
    if (reason.empty()) reason = "code signature verification failed.";
    return OrmelExecutableTrustAssessment::rejected(std::move(reason));
  }

  const auto displayed = run(signatureTool, {"--display", "--verbose=4", path});
  const std::string team(OrmelExecutableTrustPolicy::velnorTeamIdentifier);
  if (displayed.exitCode != 0 || displayed.output.find("TeamIdentifier=" + team) == std::string::npos) {
    return OrmelExecutableTrustAssessment::rejected("it is not signed by Velnor (Team ID " + team + ").");
  }

  // A plain refusal by this tool is no reason, so its exit code does not matter: only a named verdict counts.
  const auto assessed = run(gatekeeperTool, {"--assess", "--type", "execute", "--verbose=4", path});
  const auto verdict = OrmelExecutableTrustPolicy::gatekeeperVerdict(assessed.output, path);
  const auto isInVerdict = [&verdict](std::string_view word) { return verdict.find(word) != std::string::npos; };
  if (std::ranges::any_of(refusals, isInVerdict)) return OrmelExecutableTrustAssessment::rejected(assessed.output);
  return OrmelExecutableTrustAssessment::trusted();
}

/// The first line without the path at its start, if the path is all of it or is followed by a colon.
std::string withoutLeadingPath(std::string_view line, std::string_view path) {
  const auto isNamedIn = [](std::string_view name, std::string_view text) {
    return text.starts_with(name) && (text.size() == name.size() || text[name.size()] == ':');
  };
  if (isNamedIn(path, line)) return std::string(line.substr(path.size()));
  // A file system may give a name back in another composition of the same characters.
  const auto canonicalLine = detail::canonicalForm(line);
  const auto canonicalPath = detail::canonicalForm(path);
  if (isNamedIn(canonicalPath, canonicalLine)) return canonicalLine.substr(canonicalPath.size());
  return std::string(line);
}

std::string wholeNumber(double seconds) {
  constexpr double largest = 1e15;
  return std::to_string(std::isnan(seconds) ? 0 : static_cast<long long>(std::clamp(seconds, -largest, largest)));
}

}  // namespace

OrmelExecutableTrustCommandError::OrmelExecutableTrustCommandError(Kind kind, std::string command,
                                                                   double timeoutSeconds, std::string description)
    : Error(std::move(description)), kind_(kind), command_(std::move(command)), timeoutSeconds_(timeoutSeconds) {}

std::string OrmelExecutableTrustCommandError::generalAdvice() const {
  return "The command that vets programs did not end in time. Try again when the machine is less busy, or name the "
         "server by OrmelOptions::ormelPathOverride, which needs no vetting.";
}

OrmelExecutableTrustCommandError OrmelExecutableTrustCommandError::timedOut(std::string command,
                                                                            double timeoutSeconds) {
  std::string text =
      "Trust validation command " + command + " timed out after " + wholeNumber(timeoutSeconds) + " seconds.";
  return OrmelExecutableTrustCommandError(Kind::timedOut, std::move(command), timeoutSeconds, std::move(text));
}

OrmelExecutableTrustCommandError OrmelExecutableTrustCommandError::outputReadTimedOut(std::string command) {
  std::string text = "Trust validation command " + command + " did not close its output.";
  return OrmelExecutableTrustCommandError(Kind::outputReadTimedOut, std::move(command), 0, std::move(text));
}

OrmelExecutableTrustAssessment OrmelExecutableTrustPolicy::assessSystemExecutable(
    const std::string& path, const OrmelExecutableTrustCommandRunner& commandRunner) {
  if (commandRunner) return assess(path, commandRunner);
  return detail::assessByOutcomes(path, [](const std::string& command, const std::vector<std::string>& arguments) {
    return detail::runTrustCommand(command, arguments, systemCommandTimeoutSeconds, detail::TrustCommandWaits());
  });
}

OrmelExecutableTrustAssessment OrmelExecutableTrustPolicy::assess(
    const std::string& executablePath, const OrmelExecutableTrustCommandRunner& commandRunner) {
  try {
    return assessOrThrow(executablePath, commandRunner);
  } catch (const std::exception& failure) {
    return OrmelExecutableTrustAssessment::rejected(failure.what());
  } catch (...) {
    return OrmelExecutableTrustAssessment::rejected("the trust check failed.");
  }
}

OrmelExecutableTrustCommandResult OrmelExecutableTrustPolicy::runSystemTrustCommand(
    const std::string& command, const std::vector<std::string>& arguments, double timeoutSeconds) {
  auto outcome = detail::runTrustCommand(command, arguments, timeoutSeconds, detail::TrustCommandWaits());
  return detail::trustCommandResult(command, std::move(outcome));
}

std::string OrmelExecutableTrustPolicy::gatekeeperVerdict(std::string_view output, std::string_view executablePath) {
  const auto firstLine = output.substr(0, output.find('\n'));
  return detail::lowercased(withoutLeadingPath(firstLine, executablePath) +
                            std::string(output.substr(firstLine.size())));
}

OrmelExecutableTrustAssessment detail::assessByOutcomes(
    const std::string& executablePath,
    const std::function<TrustCommandOutcome(const std::string&, const std::vector<std::string>&)>& run) {
  return OrmelExecutableTrustPolicy::assess(
      executablePath, [&run](const std::string& command, const std::vector<std::string>& arguments) {
        constexpr std::int32_t nobodyLooks = -1;
        TrustCommandOutcome outcome = run(command, arguments);
        if (command == gatekeeperTool && !outcome.status) outcome.status = nobodyLooks;
        return trustCommandResult(command, std::move(outcome));
      });
}

}  // namespace ormel
