#pragma once

#include "ormel-simulator/Machine/Commands/RunningCommands.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// What a working copy has that no branch of a remote has.
void addGitDiffRequest(RequestTable& table, RunningCommands& commands);

}  // namespace ormel::simulator
