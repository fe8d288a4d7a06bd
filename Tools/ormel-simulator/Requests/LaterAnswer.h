#pragma once

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

/// The answer that a request waits for while the agent goes on with other things. It is given once, and not after the
/// agent has ended: the client then learns from the end of the output that none will come.
class LaterAnswer {
 public:
  LaterAnswer(AgentClient& client, const JSONValue& requestID) : client_(&client), id_(requestID.detached()) {}

  void give(const JSONValue& result) const { client_->reply(id_, result); }
  void refuse(const Refusal& refusal) const { client_->refuse(id_, refusal.code(), refusal.description()); }

 private:
  AgentClient* client_;
  JSONValue id_;
};

}  // namespace ormel::simulator
