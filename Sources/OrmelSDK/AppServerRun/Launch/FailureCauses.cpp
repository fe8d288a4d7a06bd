#include "OrmelSDK/AppServerRun/Launch/FailureCauses.h"

#include <utility>

#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"
#include "OrmelSDK/AppServerRun/Launch/OrmelBinaryLocator.h"
#include "OrmelSDK/AppServerRun/Launch/Secrets.h"
#include "OrmelSDK/Platform/ExecutableExamination.h"
#include "OrmelSDK/Platform/HostProcess.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

constexpr std::size_t keptBytesOfGarbage = 256;

ProcessEnd endOf(const Termination& termination) {
  ProcessEnd end;
  end.status = termination.status;
  if (termination.reason == TerminationReason::exit) end.reason = ProcessEnd::Reason::exit;
  if (termination.reason == TerminationReason::uncaughtSignal) end.reason = ProcessEnd::Reason::signal;
  return end;
}

}  // namespace

std::map<std::string, std::string> FailureCauses::environment() const {
  return buildAppServerEnvironment(options_, ormelPathDirectories_);
}

std::string FailureCauses::searchPath() const {
  const auto variables = environment();
  const auto path = variables.find("PATH");
  return path == variables.end() ? "/bin:/usr/bin" : path->second;
}

std::shared_ptr<FailureCause> FailureCauses::cause(FailureCause::Kind kind) const {
  auto made = std::make_shared<FailureCause>(kind);
  made->executablePath = executablePath_;
  return made;
}

std::optional<FailureCauses::PassedOver> FailureCauses::passedOver() const {
  if (options_.selectedOrmelPathOverride) return std::nullopt;
  PassedOver passed;
  if (options_.ormelPathOverride && !trimmed(*options_.ormelPathOverride).empty()) {
    passed.namedBy = overrideOptionName;
    passed.finding = examineExecutable(*options_.ormelPathOverride, searchPath());
    return passed;
  }
  const auto variable = environmentVariable(std::string(overrideVariableName));
  if (!variable || trimmed(*variable).empty()) return std::nullopt;
  passed.namedBy = overrideVariableName;
  passed.finding = examineExecutable(std::string(trimmed(*variable)), searchPath());
  // One that can be executed was chosen, and not passed over.
  switch (passed.finding.verdict) {
    case ExecutableVerdict::usable:
    case ExecutableVerdict::wrongArchitecture:
    case ExecutableVerdict::badInterpreter:
      return std::nullopt;
    default:
      return passed;
  }
}

std::shared_ptr<FailureCause> FailureCauses::causeUnlessPassedOver(FailureCause::Kind kind) const {
  auto passed = passedOver();
  // The named file may have become usable since the search.
  if (!passed || passed->finding.verdict == ExecutableVerdict::usable) return cause(kind);
  auto made = cause(FailureCause::Kind::unusableExecutable);
  made->namedBy = std::move(passed->namedBy);
  made->finding = std::move(passed->finding);
  return made;
}

FailureCauses::Cause FailureCauses::ofUnstartablePath() const {
  if (executablePath_.find('/') != executablePath_.npos) return cause(FailureCause::Kind::unstartablePath);
  // The bare name stands for a search that has found nothing.
  auto made = causeUnlessPassedOver(FailureCause::Kind::noServer);
  made->executablePath.clear();
  made->searchPath = environmentVariable("PATH").value_or("");
  return made;
}

FailureCauses::Cause FailureCauses::ofSearch() const {
  if (executablePath_.find('/') == executablePath_.npos) return ofUnstartablePath();
  auto made = causeUnlessPassedOver(FailureCause::Kind::noServer);
  return made->finding ? made : nullptr;
}

FailureCauses::Cause FailureCauses::ofDistrust(const std::string& reason) const {
  auto made = options_.executableTrustAssessment ? cause(FailureCause::Kind::unvettedExecutable)
                                                 : causeUnlessPassedOver(FailureCause::Kind::unvettedExecutable);
  made->vettingReason = trimmed(reason);
  made->isOwnAssessment = static_cast<bool>(options_.executableTrustAssessment);
  const auto variable = environmentVariable(std::string(overrideVariableName));
  if (made->namedBy.empty() && variable && trimmed(*variable) == executablePath_) made->namedBy = overrideVariableName;
  return made;
}

FailureCauses::Cause FailureCauses::ofRefusedLaunch(int errorNumber) const {
  auto made = cause(FailureCause::Kind::launchRefused);
  made->errorNumber = errorNumber;
  return made;
}

FailureCauses::Cause FailureCauses::ofEnd(const std::optional<Termination>& termination, bool hadErrorOutput,
                                          bool wasInitialized) const {
  auto made = cause(FailureCause::Kind::serverEnded);
  if (termination) made->end = endOf(*termination);
  made->hadErrorOutput = hadErrorOutput;
  made->wasInitialized = wasInitialized;
  if (wasInitialized) return made;
  // The program starter has run in place of a file that the system cannot run.
  auto finding = examineExecutable(executablePath_, searchPath());
  if (finding.verdict != ExecutableVerdict::usable) {
    made->kind = FailureCause::Kind::unusableExecutable;
    made->finding = std::move(finding);
    if (options_.selectedOrmelPathOverride) made->namedBy = overrideOptionName;
  }
  return made;
}

FailureCauses::Cause FailureCauses::ofGarbage(std::string_view line) const {
  auto made = cause(FailureCause::Kind::garbageOutput);
  made->firstBytes = startWithoutSecrets(line, keptBytesOfGarbage, environment());
  return made;
}

FailureCauses::Cause FailureCauses::ofUnansweredHandshake(std::chrono::nanoseconds waited) const {
  auto made = cause(FailureCause::Kind::handshakeTimedOut);
  made->waited = waited;
  return made;
}

}  // namespace ormel::detail
