#pragma once

#include <memory>

#include "Inbox.h"
#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel::chat {

/// Sets the handlers by which the server asks for approvals: each asks the user through the inbox and waits for the
/// answer without holding up a thread; or, if everything is approved, only tells the user.
void installApprovals(ThreadOptions& options, std::shared_ptr<Inbox> inbox, bool approvesEverything);

}  // namespace ormel::chat
