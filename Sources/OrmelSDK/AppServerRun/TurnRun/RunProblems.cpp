#include "OrmelSDK/AppServerRun/TurnRun/RunProblems.h"

#include <string>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/RunFailure.h"

namespace ormel::detail {

void RunProblems::handlerFailed(std::string_view method, const std::exception_ptr& error) const {
  if (!handler_) return;
  const RunFailure failure = describedFailure(error);
  if (failure.aborted) return;
  report({OrmelProblem::Kind::handlerFailed, std::string(method),
          "The handler of " + std::string(method) + " failed: " + failure.message, error});
}

void RunProblems::answerCameTooLate(std::string_view method) const {
  if (!handler_) return;
  report({OrmelProblem::Kind::answerCameTooLate, std::string(method),
          "The answer to " + std::string(method) + " came when the request was over", nullptr});
}

void RunProblems::malformedNotification(std::string_view method, const std::exception_ptr& error) const {
  if (!handler_) return;
  report({OrmelProblem::Kind::malformedNotification, std::string(method),
          "The notification " + std::string(method) + " was dropped: " + describedFailure(error).message, error});
}

void RunProblems::report(OrmelProblem problem) const {
  auto calling = [handler = handler_, told = std::move(problem)] {
    try {
      handler(told);
    } catch (...) {
      // There is nobody left to tell.
    }
  };
  scheduler_.post(std::move(calling), "problem handler");
}

}  // namespace ormel::detail
