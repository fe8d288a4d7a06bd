#pragma once

#include "Server.h"

namespace ormel::control {

/// The account, and how much of its rate limits is used up.
Task<Report> readAccount(Server server);

/// How much the account was used.
Task<Report> readUsage(Server server);

}  // namespace ormel::control
