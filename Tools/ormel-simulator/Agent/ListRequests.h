#pragma once

#include "ormel-simulator/Agent/AgentThreadStore.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Adds the requests that list threads. Store and client must outlive the table.
void addListRequests(RequestTable& table, AgentThreadStore& store, AgentClient& client);

}  // namespace ormel::simulator
