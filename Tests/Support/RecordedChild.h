#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::testing {

/// The settings of `/bin/sh -c script`.
detail::LaunchSettings shell(std::string script);

/// The settings of the helper program that misbehaves on demand.
detail::LaunchSettings helper(std::vector<std::string> arguments);

/// A child whose output and end are recorded. Each wait gives up after a generous time, and fails.
class RecordedChild {
 public:
  enum class Reading { atOnce, onDemand };

  RecordedChild(detail::ProcessLauncher& launcher, const detail::LaunchSettings& settings,
                Reading reading = Reading::atOnce);

  detail::ChildProcess& operator*() { return *child_; }
  detail::ChildProcess* operator->() { return child_.get(); }

  void startReading();

  /// Destroys the child object; what is recorded stays.
  void destroy() { child_.reset(); }

  std::optional<detail::Termination> waitForTermination();
  bool waitForOutput(const std::string& text);
  bool waitForEndOfOutput();
  bool waitForEndOfErrorOutput();

  /// Everything that came until both streams ended; absent when they do not.
  std::optional<std::string> wholeOutput();
  std::optional<std::string> wholeErrorOutput();

  std::string output();
  int terminations();
  /// The calls for the standard output: "start", "chunk" and "end".
  std::vector<std::string> calls();

 private:
  struct Record {
    bool waitUntil(const std::function<bool()>& condition);

    std::mutex mutex;
    std::condition_variable changed;
    std::string output;
    std::string errorOutput;
    bool outputEnded = false;
    bool errorOutputEnded = false;
    int terminations = 0;
    detail::Termination termination;
    std::vector<std::string> calls;
  };

  std::shared_ptr<Record> record_ = std::make_shared<Record>();
  std::unique_ptr<detail::ChildProcess> child_;
};

}  // namespace ormel::testing
