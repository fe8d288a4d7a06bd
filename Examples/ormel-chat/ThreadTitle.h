#pragma once

#include <string>

#include "OrmelSDK/Records/ThreadRecords.h"

namespace ormel::chat {

/// A title by which a person knows the conversation: its name, or else how it began.
std::string titleOf(const OrmelThreadRecord& thread);

/// When something last happened, like "2 h ago"; empty where the server does not say when. Both times are seconds since
/// the epoch.
std::string ageOf(const OrmelThreadRecord& thread, double now);

}  // namespace ormel::chat
