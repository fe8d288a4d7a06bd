#include "Failure.h"

#include <unistd.h>

#include <string>

#include "Console.h"
#include "OrmelSDK/Base/Error.h"

namespace ormel::chat {

void tellFailure(const std::exception& error) {
  Console errors(STDERR_FILENO, Console::Readers::people);
  errors.line(std::string("ormel-chat: ") + error.what());
  if (const auto* ours = dynamic_cast<const Error*>(&error); ours && ours->cause()) {
    errors.line(ours->advice());
  }
  errors.flush();
}

}  // namespace ormel::chat
