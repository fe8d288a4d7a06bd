#include "Failure.h"

#include <unistd.h>

#include <string>

#include "Console.h"

namespace ormel::chat {

void tellFailure(const std::exception& error) {
  Console errors(STDERR_FILENO, Console::Readers::people);
  errors.line(std::string("ormel-chat: ") + error.what());
  errors.flush();
}

}  // namespace ormel::chat
