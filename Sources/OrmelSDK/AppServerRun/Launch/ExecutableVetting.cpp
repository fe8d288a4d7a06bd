#include "OrmelSDK/AppServerRun/Launch/ExecutableVetting.h"

#include <exception>

#include "OrmelSDK/AppServerRun/Launch/OrmelExecutableTrustPolicy.h"
#include "OrmelSDK/Base/OrmelProcessError.h"

namespace ormel::detail {

namespace {

OrmelExecutableTrustAssessment assessment(const std::string& path, const OrmelOptions& options) {
  if (options.executableTrustAssessment) return options.executableTrustAssessment(path);
  if (!needsVetting(options)) return OrmelExecutableTrustAssessment::trusted();
  return OrmelExecutableTrustPolicy::assessSystemExecutable(path, options.trustCommandRunner);
}

OrmelExecutableTrustAssessment assessmentOrRejection(const std::string& path, const OrmelOptions& options) {
  try {
    return assessment(path, options);
  } catch (const std::exception& failure) {
    return OrmelExecutableTrustAssessment::rejected(failure.what());
  } catch (...) {
    return OrmelExecutableTrustAssessment::rejected("the trust check failed.");
  }
}

}  // namespace

bool needsVetting(const OrmelOptions& options) noexcept {
  return options.executableTrustAssessment || !options.selectedOrmelPathOverride;
}

void requireTrustedExecutable(const std::string& path, const OrmelOptions& options) {
  const auto answer = assessmentOrRejection(path, options);
  if (!answer.isTrusted()) throw OrmelProcessError::untrustedExecutable(path, answer.reason());
}

}  // namespace ormel::detail
