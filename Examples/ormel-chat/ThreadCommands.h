#pragma once

#include <memory>
#include <string>

#include "Inbox.h"
#include "OrmelSDK/Ormel.h"

// The commands about conversations that the server keeps. They tell the inbox what has come of them.
namespace ormel::chat {

Task<void> showThreads(Ormel ormel, std::shared_ptr<Inbox> inbox);

/// Has one of them chosen.
Task<void> offerThreads(Ormel ormel, std::shared_ptr<Inbox> inbox);

/// Chooses the one of the id, if there is one.
Task<void> chooseThread(Ormel ormel, std::string id, std::shared_ptr<Inbox> inbox);

Task<void> nameThread(Ormel ormel, std::string id, std::string name, std::shared_ptr<Inbox> inbox);

/// Chooses a copy of the thread.
Task<void> forkThread(Ormel ormel, std::string id, std::shared_ptr<Inbox> inbox);

/// Chooses a new thread afterwards.
Task<void> archiveThread(Ormel ormel, std::string id, std::shared_ptr<Inbox> inbox);

}  // namespace ormel::chat
