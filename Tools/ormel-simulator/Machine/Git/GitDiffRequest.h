#pragma once

#include "ormel-simulator/Machine/Commands/RunningCommands.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Adds the request for the changes of a working copy that no branch of a remote has.
void addGitDiffRequest(RequestTable& table, RunningCommands& commands);

}  // namespace ormel::simulator
