#pragma once

#include <exception>
#include <string>
#include <utility>

namespace ormel {

/// Something that went wrong where no call and no event can tell of it: the library has gone on in the safest way.
///
/// *Thread safety*: a plain value.
struct OrmelProblem {
  enum class Kind {
    /// A handler threw, gave no answer, or gave one that was not offered. The server was given the most restrictive
    /// answer instead.
    handlerFailed,
    /// A handler answered a request that was over by then: the answer was dropped.
    answerCameTooLate,
    /// A notification of the server could not be decoded and was dropped.
    malformedNotification,
  };

  OrmelProblem(Kind problemKind, std::string problemMethod, std::string problemDescription, std::exception_ptr cause)
      : kind(problemKind),
        method(std::move(problemMethod)),
        description(std::move(problemDescription)),
        exception(std::move(cause)) {}

  Kind kind;
  /// The method of the request or notification, such as "item/commandExecution/requestApproval".
  std::string method;
  /// One sentence for a log, in UTF-8.
  std::string description;
  /// The exception, where there was one.
  std::exception_ptr exception;
};

}  // namespace ormel
