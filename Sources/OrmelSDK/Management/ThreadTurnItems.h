#pragma once

#include <memory>
#include <string>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Management/ThreadParams.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"

namespace ormel::detail {

/// A page of a turn's items. If the server refuses the call as one that it does not know, it is asked again by the
/// older name, and each item that it brings is given the turn's id. Every other failure is that of the first attempt.
Task<ThreadTurnItemsListResponse> listThreadTurnItems(std::shared_ptr<OneShotPerformer> performer, std::string threadID,
                                                      std::string turnID, ListThreadTurnItemsParams params);

}  // namespace ormel::detail
