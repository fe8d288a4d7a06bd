#pragma once

#include "ormel-simulator/Agent/AgentThreadStore.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Adds the requests that begin and end threads. Store and client must outlive the table.
void addThreadRequests(RequestTable& table, AgentThreadStore& store, AgentClient& client);

/// A new thread that goes on where the other one is. Fails with `Refusal`.
AgentThread& forkThread(AgentThreadStore& store, const AgentThread& parent, const JSONValue& params);

}  // namespace ormel::simulator
