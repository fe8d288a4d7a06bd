#pragma once

#include "ormel-simulator/Agent/AgentThreadStore.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Adds the requests that change what is known of a thread. Store and client must outlive the table.
void addThreadEditRequests(RequestTable& table, AgentThreadStore& store, AgentClient& client);

/// Takes over what the params choose for the thread.
void applyChoices(AgentThreadStore& store, AgentThread& thread, const JSONValue& params);

}  // namespace ormel::simulator
