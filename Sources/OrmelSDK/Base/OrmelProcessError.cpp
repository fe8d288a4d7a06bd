#include "OrmelSDK/Base/OrmelProcessError.h"

#include <tuple>
#include <utility>

#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel {

OrmelProcessError OrmelProcessError::withText(Kind kind, std::string_view prefix, std::string text,
                                              std::shared_ptr<const FailureCause> cause) {
  OrmelProcessError error(kind, std::string(prefix) + text, std::move(cause));
  error.text_ = std::move(text);
  return error;
}

OrmelProcessError OrmelProcessError::unsupportedPlatform(std::string text) {
  return withText(Kind::unsupportedPlatform, "Unsupported platform: ", std::move(text));
}

OrmelProcessError OrmelProcessError::executableNotFound(std::string text) {
  return withText(Kind::executableNotFound, "Ormel executable not found: ", std::move(text));
}

OrmelProcessError OrmelProcessError::childProcessMissingPipe(std::string text) {
  return withText(Kind::childProcessMissingPipe, "Child process has no ", std::move(text));
}

OrmelProcessError OrmelProcessError::invalidConfigOverride(std::string text) {
  return withText(Kind::invalidConfigOverride, "", std::move(text));
}

OrmelProcessError OrmelProcessError::untrustedExecutable(std::string path, std::string reason,
                                                         std::shared_ptr<const FailureCause> cause) {
  OrmelProcessError error(Kind::untrustedExecutable, trustFailureRecoveryMessage(), std::move(cause));
  error.path_ = std::move(path);
  error.reason_ = std::move(reason);
  return error;
}

OrmelProcessError OrmelProcessError::spawnFailed(std::string text, std::shared_ptr<const FailureCause> cause) {
  return withText(Kind::spawnFailed, "", std::move(text), std::move(cause));
}

OrmelProcessError OrmelProcessError::exited(std::string detail, std::string stderr_) {
  std::string description = "Ormel process exited with " + detail;
  const std::string_view shown = ormel::detail::trimmed(stderr_);
  if (!shown.empty()) description.append(": ").append(shown);
  OrmelProcessError error(Kind::exited, std::move(description));
  error.detail_ = std::move(detail);
  error.stderrText_ = std::move(stderr_);
  return error;
}

OrmelProcessError OrmelProcessError::aborted() { return OrmelProcessError(Kind::aborted, "Operation aborted"); }

std::string OrmelProcessError::trustFailureRecoveryMessage() {
  return "macOS could not verify the Ormel CLI. Reinstall it with:\n\ncurl -fsSL " + std::string(installerURL) +
         " | sh";
}

bool operator==(const OrmelProcessError& left, const OrmelProcessError& right) noexcept {
  const auto payload = [](const OrmelProcessError& error) {
    return std::tie(error.kind_, error.text_, error.path_, error.reason_, error.detail_, error.stderrText_);
  };
  return payload(left) == payload(right);
}

std::string OrmelProcessError::generalAdvice() const {
  switch (kind_) {
    case Kind::unsupportedPlatform:
      return "Use the library on Linux or macOS.";
    case Kind::childProcessMissingPipe:
    case Kind::spawnFailed:
    case Kind::exited:
      return "Run ormel-doctor, which starts the server as the library does and tells what it finds.";
    case Kind::executableNotFound:
    case Kind::untrustedExecutable:
      return "Name the server that is to be started, by OrmelOptions::ormelPathOverride or by the option --server of "
             "the programs. ormel-doctor shows which ones the library finds.";
    case Kind::invalidConfigOverride:
      return "Correct OrmelOptions::config: keys may not be empty, and numbers must be finite.";
    case Kind::aborted:
      break;
  }
  return "The application ended the operation itself; nothing is wrong. Start it again if it is still wanted.";
}

}  // namespace ormel
