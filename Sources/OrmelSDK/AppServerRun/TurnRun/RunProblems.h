#pragma once

#include <exception>
#include <functional>
#include <string_view>

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Options/OrmelProblem.h"

namespace ormel::detail {

/// Tells the application of problems that nothing else tells of. Without its handler, nothing is done.
///
/// *Thread safety*: all members may be called from any thread.
class RunProblems {
 public:
  using Handler = std::function<void(const OrmelProblem&)>;

  /// The handler is called on `scheduler`. An exception of it is dropped.
  RunProblems(const Handler& handler, Scheduler& scheduler) : handler_(handler), scheduler_(scheduler) {}

  /// A handler failed; that it was cancelled, as its request was over, is no failure.
  void handlerFailed(std::string_view method, const std::exception_ptr& error) const;
  void answerCameTooLate(std::string_view method) const;
  void malformedNotification(std::string_view method, const std::exception_ptr& error) const;

 private:
  void report(OrmelProblem problem) const;

  const Handler handler_;
  Scheduler& scheduler_;
};

}  // namespace ormel::detail
