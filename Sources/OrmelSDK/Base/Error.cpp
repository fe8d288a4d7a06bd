#include "OrmelSDK/Base/Error.h"

namespace ormel {

std::string Error::advice() const { return cause_ ? detail::adviceFor(*cause_) : generalAdvice(); }

std::string Error::generalAdvice() const {
  return "The text above is all that is known. If it does not help, run ormel-doctor, which tests the set-up of the "
         "server from end to end.";
}

}  // namespace ormel
