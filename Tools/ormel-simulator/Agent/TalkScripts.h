#pragma once

#include <string>

#include "ormel-simulator/Agent/AgentTurn.h"

// Turns in which the agent only talks.
namespace ormel::simulator {

void playPlainAnswer(AgentTurn& turn);
void playFailure(AgentTurn& turn, const std::string& argument);
void playError(AgentTurn& turn, const std::string& argument);
void playWarning(AgentTurn& turn, const std::string& argument);
void playSlowAnswer(AgentTurn& turn, const std::string& argument);
void playCrash(AgentTurn& turn, const std::string& argument);
void playJSONAnswer(AgentTurn& turn, const std::string& argument);

}  // namespace ormel::simulator
