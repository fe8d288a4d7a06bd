#pragma once

#include "ormel-simulator/Agent/AgentThreadStore.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Adds the requests about goals. The store must outlive the table.
void addGoalRequests(RequestTable& table, AgentThreadStore& store);

}  // namespace ormel::simulator
