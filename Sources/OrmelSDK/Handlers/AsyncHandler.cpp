#include "OrmelSDK/Handlers/AsyncHandler.h"

namespace ormel::detail {

void failForEmptyHandler() { throw HandlerError("The handler is an empty function object"); }

void failForEmptyTask() {
  throw HandlerError("The handler returned an empty task: was it awaited already, or returned as {}?");
}

}  // namespace ormel::detail
