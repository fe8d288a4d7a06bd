#pragma once

#include <memory>
#include <stop_token>
#include <string>

#include "Inbox.h"
#include "OrmelSDK/Thread.h"

namespace ormel::chat {

/// Runs an operation and sends all that comes of it to the inbox.
void follow(Task<StreamedTurn> operation, std::shared_ptr<Inbox> inbox);

/// Runs a call that gives nothing back; the inbox learns only of its failure.
void follow(Task<void> call, std::shared_ptr<Inbox> inbox);

/// Adds the text to a turn by the call; the inbox learns what came of it.
void followSteer(Task<void> call, std::string text, std::shared_ptr<Inbox> inbox);

/// Runs a call in place of an operation: the inbox learns of its end.
void followToEnd(Task<void> call, std::shared_ptr<Inbox> inbox, std::stop_token stop);

}  // namespace ormel::chat
