#pragma once

#include "ormel-simulator/Agent/AgentThreadStore.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Adds the requests that tell what a thread holds: turns, items, a summary. The store must outlive the table.
void addTurnListRequests(RequestTable& table, AgentThreadStore& store);

}  // namespace ormel::simulator
