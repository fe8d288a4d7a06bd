#pragma once

#include <string_view>

#include "OrmelSDK/TurnRun/Campaign/CampaignServer.h"

namespace ormel::testing::failures {

// What the failures of calls and of operations begin with.
inline constexpr std::string_view aborted = "Operation aborted";
inline constexpr std::string_view exited = "Ormel process exited with ";
inline constexpr std::string_view endOfFile = "Ormel app-server terminated unexpectedly";
inline constexpr std::string_view explained = CampaignServer::explanation;
inline constexpr std::string_view unreadable = "App-server decode error at ";
inline constexpr std::string_view timedOut = "App-server RPC ";
inline constexpr std::string_view noLongerCurrent = "Prepared app-server operation is no longer current";
inline constexpr std::string_view alreadyActive = "An app-server operation is already active";
inline constexpr std::string_view streamFinished = "Stream finished";
inline constexpr std::string_view alreadyFinished = "Ormel app-server stream already finished";

}  // namespace ormel::testing::failures
