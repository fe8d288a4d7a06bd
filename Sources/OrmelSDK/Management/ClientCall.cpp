#include "OrmelSDK/Management/ClientCall.h"

#include <utility>

#include "OrmelSDK/AppServerRun/Framing/AppServerRunSupport.h"
#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

void decodeReply(const JSONValue& result, const ReplyPlace& reply) {
  try {
    reply.decode(result);
  } catch (const DecodingError& error) {
    throw ThreadRunError::streamError(appServerProtocolErrorDescription(error));
  }
}

}  // namespace

Task<void> callOn(std::shared_ptr<AppServerRPCClient> client, std::string method, std::optional<JSONValue> params,
                  ReplyPlace reply) {
  co_await client->startProcess();
  co_await client->initializeIfNeeded();
  auto sending = client->sendRequest(std::move(method), std::move(params));
  const JSONValue result = co_await std::move(sending);
  decodeReply(result, reply);
}

}  // namespace ormel::detail
