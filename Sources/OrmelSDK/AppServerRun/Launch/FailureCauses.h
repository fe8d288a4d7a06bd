#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Base/FailureCause.h"
#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// Finds the causes of the failures of one server: looks at the files as they are at that moment. Made where something
/// has failed, and gone with it.
///
/// *Object lifetimes*: refers to what it is made of.
class FailureCauses {
 public:
  using Cause = std::shared_ptr<const FailureCause>;

  FailureCauses(const std::string& executablePath, const std::vector<std::string>& ormelPathDirectories,
                const OrmelOptions& options)
      : executablePath_(executablePath), ormelPathDirectories_(ormelPathDirectories), options_(options) {}

  /// That the path would be taken for something else: often, because nothing was found for the path that was named.
  Cause ofUnstartablePath() const;

  /// That a name was passed over, or that nothing was found; null if all is well.
  Cause ofSearch() const;

  Cause ofDistrust(const std::string& reason) const;

  /// `errorNumber` is 0 if it is not known.
  Cause ofRefusedLaunch(int errorNumber) const;

  /// The end of the process, or of its output.
  Cause ofEnd(const std::optional<Termination>& termination, bool hadErrorOutput, bool wasInitialized) const;

  Cause ofGarbage(std::string_view line) const;

  Cause ofUnansweredHandshake(std::chrono::nanoseconds waited) const;

  /// The path that was named and passed over, if one was, with the option or variable that names it.
  struct PassedOver {
    std::string namedBy;
    ExecutableFinding finding;
  };
  std::optional<PassedOver> passedOver() const;

 private:
  std::shared_ptr<FailureCause> cause(FailureCause::Kind kind) const;
  /// The cause of a server that was not chosen by its name: a name that was passed over goes ahead of `kind`.
  std::shared_ptr<FailureCause> causeUnlessPassedOver(FailureCause::Kind kind) const;
  std::map<std::string, std::string> environment() const;
  std::string searchPath() const;

  const std::string& executablePath_;
  const std::vector<std::string>& ormelPathDirectories_;
  const OrmelOptions& options_;
};

}  // namespace ormel::detail
