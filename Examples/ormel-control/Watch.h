#pragma once

#include <string>

#include "OrmelSDK/Management/OrmelControlNotification.h"
#include "Server.h"

namespace ormel::control {

/// One line about a notification for people: its method and a short form of its params, with nothing that could steer
/// a terminal.
std::string shortLine(const OrmelControlNotification& notification);

/// The same for programs, as JSON with `method` and `params`.
std::string jsonLine(const OrmelControlNotification& notification);

/// Starts a server process and prints its notifications until a signal comes or nobody reads the output any more. Gives
/// the status to exit with. Fails if the server does.
int watchNotifications(const Server& server, bool json);

}  // namespace ormel::control
