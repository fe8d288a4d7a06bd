#pragma once

#include <memory>

#include "Inbox.h"
#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel::chat {

/// Sets the handler by which MCP servers have the user fill in a form or open a page.
void installElicitations(ThreadOptions& options, std::shared_ptr<Inbox> inbox);

}  // namespace ormel::chat
