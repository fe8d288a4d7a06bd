#include "OrmelSDK/AppServerRun/Launch/ExitDetail.h"

namespace ormel::detail {

std::string exitDetail(const Termination& termination) {
  const auto status = std::to_string(termination.status);
  switch (termination.reason) {
    case TerminationReason::exit:
      return "exit status " + status;
    case TerminationReason::uncaughtSignal:
      return "signal " + status;
    case TerminationReason::unknown:
      break;
  }
  return "status " + status + " (unknown: reaped by another part of this process)";
}

}  // namespace ormel::detail
