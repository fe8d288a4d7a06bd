#pragma once

#include <memory>

#include "Inbox.h"
#include "OrmelSDK/Items/McpToolCallItems.h"
#include "OrmelSDK/Thread.h"

namespace ormel::chat {

/// Whether the item puts questions to the user.
bool isUserInputRequest(const McpToolCallItem& item);

/// The questions of such an item, whose answers go to the server. Null if it asks nothing.
std::shared_ptr<Question> userInputQuestion(const McpToolCallItem& item, const Thread& thread,
                                            const std::shared_ptr<Inbox>& inbox);

}  // namespace ormel::chat
