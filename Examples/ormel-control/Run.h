#pragma once

#include "Server.h"

namespace ormel::control {

/// Asks the server, prints what comes of it, and gives the status to exit with. A signal that ends the program ends the
/// server first. Fails with the error of the call.
int runAction(const Action& action, const Server& server, bool json);

}  // namespace ormel::control
