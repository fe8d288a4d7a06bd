#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Options/OrmelConfigValue.h"
#include "OrmelSDK/Options/OrmelExecutableTrust.h"
#include "OrmelSDK/Options/OrmelProblem.h"

namespace ormel {

/// The settings by which the library finds, vets and starts the server.
///
/// *Thread safety*: a plain value. The callbacks are called from threads of the library, and may be called from
/// several at the same time.
class OrmelOptions {
 public:
  OrmelOptions() = default;

  /// The server executable to use. A path that names no executable file is passed over, and the usual places are
  /// searched. An executable that is chosen this way is not vetted, unless by `executableTrustAssessment`.
  ///
  /// Each start fails with `OrmelProcessError::Kind::spawnFailed` if the path that was found or chosen holds "=",
  /// begins with "-" or has no "/" in it: "/usr/bin/env", which starts the server, would take it for something else.
  std::optional<std::string> ormelPathOverride;

  /// Base URL of the model service; it goes ahead of what `config` says. An empty text is passed on too.
  std::optional<std::string> baseUrl;

  /// API key. It is handed to the server in its environment, never on its command line.
  std::optional<std::string> apiKey;

  /// Overrides of the server's configuration. The member `features.goals` is always sent as true.
  std::optional<std::map<std::string, OrmelConfigValue>> config;

  /// The complete environment of the server. If empty, it inherits this process's.
  std::optional<std::map<std::string, std::string>> env;

  /// Decides, in place of the system's code-signing tools, whether the executable at the given path may be started.
  std::function<OrmelExecutableTrustAssessment(const std::string& executablePath)> executableTrustAssessment;

  /// Whether the executable in use is the one that `ormelPathOverride` names. Set by `Ormel`, whatever it was.
  bool selectedOrmelPathOverride = false;

  /// Runs a command of the trust check: its path, then its arguments. If it throws, the executable is rejected.
  std::function<OrmelExecutableTrustCommandResult(const std::string& command,
                                                  const std::vector<std::string>& arguments)>
      trustCommandRunner;

  /// Is told of problems that no call and no event tells of, such as a handler that threw: the library goes on in the
  /// safest way, and its user only sees a refusal. Called on threads of the library, which it may block; what it throws
  /// is dropped. Without it nothing is recorded.
  std::function<void(const OrmelProblem&)> problemHandler;

  /// `config` with the features switched on that the library cannot work without.
  std::map<std::string, OrmelConfigValue> configEnablingRequiredSDKFeatures() const;
};

}  // namespace ormel
