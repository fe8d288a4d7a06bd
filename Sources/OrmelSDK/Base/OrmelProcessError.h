#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Export.h"

namespace ormel {

/// The failure of starting the server process, or of an operation that was aborted.
///
/// *Thread safety*: an immutable value.
class ORMEL_EXPORT OrmelProcessError : public Error {
 public:
  enum class Kind {
    /// The library does not run on this platform.
    unsupportedPlatform,
    /// There is no server executable.
    executableNotFound,
    /// The child process was started without one of its pipes.
    childProcessMissingPipe,
    /// A config override has no form on the command line.
    invalidConfigOverride,
    /// The trust policy rejected the executable. The text tells the user the one thing that helps and is the same
    /// for every reason.
    untrustedExecutable,
    /// The process could not be started.
    spawnFailed,
    /// The process ended while an operation needed it.
    exited,
    /// The operation was aborted by the application.
    aborted,
  };

  /// The address of the script that installs the server.
  static constexpr std::string_view installerURL = "https://ormel.invalid/install.sh";

  static OrmelProcessError unsupportedPlatform(std::string text);
  static OrmelProcessError executableNotFound(std::string text);
  static OrmelProcessError childProcessMissingPipe(std::string text);
  static OrmelProcessError invalidConfigOverride(std::string text);
  static OrmelProcessError untrustedExecutable(std::string path, std::string reason,
                                               std::shared_ptr<const FailureCause> cause = nullptr);
  static OrmelProcessError spawnFailed(std::string text, std::shared_ptr<const FailureCause> cause = nullptr);

  /// `detail` is "exit status ", "signal " or "status " followed by the number; `stderr_` is what the process wrote
  /// to its standard error.
  static OrmelProcessError exited(std::string detail, std::string stderr_);
  static OrmelProcessError aborted();

  /// The text shown to the user when the executable is not trusted.
  static std::string trustFailureRecoveryMessage();

  Kind kind() const noexcept { return kind_; }

  bool isAborted() const noexcept override { return kind_ == Kind::aborted; }
  bool isRetryable() const noexcept override { return kind_ == Kind::exited; }

  /// The payload of the cases that carry one text, else empty.
  const std::string& text() const noexcept { return text_; }

  /// The executable that was not trusted, and why; empty for the other cases.
  const std::string& path() const noexcept { return path_; }
  const std::string& reason() const noexcept { return reason_; }

  /// How the process ended, and its standard error; empty for the other cases.
  const std::string& detail() const noexcept { return detail_; }
  const std::string& stderr_() const noexcept { return stderrText_; }

  friend bool operator==(const OrmelProcessError& left, const OrmelProcessError& right) noexcept;

 protected:
  std::string generalAdvice() const override;

 private:
  OrmelProcessError(Kind kind, std::string description, std::shared_ptr<const FailureCause> cause = nullptr)
      : Error(std::move(description), std::move(cause)), kind_(kind) {}

  static OrmelProcessError withText(Kind kind, std::string_view prefix, std::string text,
                                    std::shared_ptr<const FailureCause> cause = nullptr);

  Kind kind_;
  std::string text_;
  std::string path_;
  std::string reason_;
  std::string detail_;
  std::string stderrText_;
};

}  // namespace ormel
