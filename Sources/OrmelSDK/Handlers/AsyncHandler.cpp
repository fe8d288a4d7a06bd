#include "OrmelSDK/Handlers/AsyncHandler.h"

namespace ormel {

std::string HandlerError::generalAdvice() const {
  return "A handler of the application has to answer: give it a function, and let its task be one that nobody has "
         "awaited or moved from.";
}

}  // namespace ormel

namespace ormel::detail {

void failForEmptyHandler() { throw HandlerError("The handler is an empty function object"); }

void failForEmptyTask() {
  throw HandlerError("The handler returned an empty task: was it awaited already, or returned as {}?");
}

}  // namespace ormel::detail
