#pragma once

#include <memory>
#include <optional>
#include <string>

#include "OrmelSDK/AppServerRun/RPCClient/AppServerRPCClient.h"
#include "OrmelSDK/Management/ReplyPlace.h"

namespace ormel::detail {

/// A call from start to end on a client: starts the server and shakes hands if need be, sends the request, decodes the
/// result. Fails as these do; a result that does not decode fails with `ThreadRunError` of the kind `streamError`,
/// whose sentence says what is wrong with it. The client is left as it is.
Task<void> callOn(std::shared_ptr<AppServerRPCClient> client, std::string method, std::optional<JSONValue> params,
                  ReplyPlace reply);

}  // namespace ormel::detail
