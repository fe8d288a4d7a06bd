#pragma once

#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignServer.h"

namespace ormel::testing {

// How the failures begin that a schedule may bring about.
inline constexpr std::string_view aborted = "Operation aborted";
inline constexpr std::string_view exited = "Ormel process exited with ";
inline constexpr std::string_view endOfFile = "Ormel app-server terminated unexpectedly";
inline constexpr std::string_view explained = CampaignServer::explanation;
inline constexpr std::string_view unreadable = "App-server decode error at ";
inline constexpr std::string_view timedOut = "App-server RPC ";
inline constexpr std::string_view interruptTimedOut = "App-server RPC turn/interrupt timed out";
inline constexpr std::string_view refused = "refused";
inline constexpr std::string_view noLongerCurrent = "Prepared app-server operation is no longer current";
inline constexpr std::string_view alreadyActive = "An app-server operation is already active";
inline constexpr std::string_view streamFinished = "Stream finished";
inline constexpr std::string_view alreadyFinished = "Ormel app-server stream already finished";
inline constexpr std::string_view dropped = "dropped";

/// The errors that a server may bring about which keeps to the plan.
std::vector<std::string_view> errorsOf(const ServerPlan& plan);

}  // namespace ormel::testing
