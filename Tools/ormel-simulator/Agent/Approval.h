#pragma once

#include <functional>
#include <string>

#include "ormel-simulator/Agent/AgentTurn.h"

namespace ormel::simulator {

enum class Approval {
  accepted,
  declined,
  /// Declined, and the turn is to end.
  cancelled,
};

/// Has the client approve of an item, unless it has approved of that method for the whole session, or wants never to be
/// asked. The handler is called when that is decided.
void askApproval(AgentTurn& turn, const std::string& method, JSONObjectBuilder members,
                 std::function<void(Approval)> decided);

}  // namespace ormel::simulator
