#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel {

std::string ThreadRunError::generalAdvice() const {
  if (kind_ == Kind::turnFailed) {
    return "The server was reached and took the turn, and reports that the turn failed; the text above is the "
           "server's own. The conversation is sound: mend what the text names, and ask again.";
  }
  return "The operation with the server broke off; the text above says where. Try it once more: a new operation starts "
         "a new server process where it needs one. If it fails again, run ormel-doctor to test the set-up, and look "
         "the text up in docs/troubleshooting.md.";
}

}  // namespace ormel
