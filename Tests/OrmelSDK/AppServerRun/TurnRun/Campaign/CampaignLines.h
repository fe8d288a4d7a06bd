#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::testing {

JSONValue notification(std::string_view method, const JSONValue& params);
JSONValue turnStarted(const std::string& threadID, const std::string& turnID, int window);
JSONValue turnCompleted(const std::string& threadID, const JSONValue& turn);

/// The thread and the turn that lines are about, and others that the same server has.
struct LineIDs {
  std::string threadID;
  std::string turnID;
  std::string foreignThreadID;
  std::string foreignTurnID;
};

/// Other things that a server says in the course of a turn: items and how they grow, plans, tokens, notices, and lines
/// that mean nothing; about this turn, about others, in either spelling, or about none in particular. Each line may
/// come at any time.
std::vector<JSONValue> wordsOfTurn(SimulatedScheduler& scheduler, const LineIDs& ids);

/// Starts and ends that are not those of the turn, though they look like them: with the right turn and a wrong thread,
/// or the other way round.
std::vector<JSONValue> decoysOfTurn(SimulatedScheduler& scheduler, const LineIDs& ids, bool isCompaction);

/// A line that no run can take, and how the failure begins that it brings about.
struct BrokenLine {
  const char* text;
  const char* failure;
};
const std::vector<BrokenLine>& brokenLines();

/// Notifications that lack what they must have, and their failures.
const std::vector<BrokenLine>& faultyNotifications();

}  // namespace ormel::testing
