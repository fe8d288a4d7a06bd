#include "OrmelSDK/AppServerRun/Launch/ExecutableVetting.h"

#include <exception>
#include <string_view>

#include "OrmelSDK/AppServerRun/Launch/FailureCauses.h"
#include "OrmelSDK/AppServerRun/Launch/OrmelExecutableTrustPolicy.h"
#include "OrmelSDK/Base/OrmelProcessError.h"

namespace ormel::detail {

namespace {

using Assessment = OrmelExecutableTrustAssessment;

template <typename Assess>
void requireTrust(const std::string& path, const OrmelOptions& options, const Assess& assess) {
  Assessment answer = Assessment::rejected("the trust check failed.");
  try {
    answer = assess();
  } catch (const std::exception& failure) {
    answer = Assessment::rejected(failure.what());
  } catch (...) {
    // An assessment that failed has not vouched for the executable.
  }
  if (answer.isTrusted()) return;
  throw OrmelProcessError::untrustedExecutable(path, answer.reason(),
                                               FailureCauses(path, {}, options).ofDistrust(answer.reason()));
}

/// The words for what the program starter would take a path for that it would not start exactly; empty for all others.
std::string_view misreadingOf(std::string_view path) {
  if (path.find('\0') != path.npos) return "a path ends at a zero byte";
  if (path.starts_with('-')) return "a path that begins with \"-\" would be taken for an option";
  if (path.find('=') != path.npos) return "a path with \"=\" in it would be taken for a variable of the environment";
  if (path.find('/') == path.npos) return "a name without \"/\" would be looked up in PATH";
  return {};
}

}  // namespace

bool needsVetting(const OrmelOptions& options) noexcept {
  return options.executableTrustAssessment || !options.selectedOrmelPathOverride;
}

void requireExactStart(const std::string& path, const OrmelOptions& options) {
  const std::string_view misreading = misreadingOf(path);
  if (misreading.empty()) return;
  throw OrmelProcessError::spawnFailed(
      "The server executable \"" + path + "\" cannot be started: " + std::string(misreading),
      FailureCauses(path, {}, options).ofUnstartablePath());
}

void requireTrustedExecutable(const std::string& path, const OrmelOptions& options) {
  const auto& ownAssessment = options.executableTrustAssessment;
  if (ownAssessment) requireTrust(path, options, [&] { return ownAssessment(path); });
  requireExactStart(path, options);
  if (ownAssessment || !needsVetting(options)) return;
  requireTrust(path, options,
               [&] { return OrmelExecutableTrustPolicy::assessSystemExecutable(path, options.trustCommandRunner); });
}

}  // namespace ormel::detail
