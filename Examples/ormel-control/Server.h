#pragma once

#include <functional>
#include <utility>

#include "OrmelSDK/Ormel.h"
#include "Report.h"

namespace ormel::control {

/// The ways to the server: calls that each have a process of their own, and a session that keeps one.
struct Server {
  explicit Server(Ormel library) : ormel(std::move(library)), session(ormel.makeControlSession()) {}

  Ormel ormel;
  OrmelControlSession session;
};

/// The requests of a command to the server, and the report that it makes of the replies.
using Action = std::function<Task<Report>(Server server)>;

}  // namespace ormel::control
