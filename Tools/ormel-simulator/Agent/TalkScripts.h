#pragma once

#include "ormel-simulator/Agent/AgentTurn.h"
#include "ormel-simulator/Agent/ScriptArgument.h"

// Turns in which the agent only talks.
namespace ormel::simulator {

void playPlainAnswer(AgentTurn& turn);
void playFailure(AgentTurn& turn, const ScriptArgument& argument);
void playError(AgentTurn& turn, const ScriptArgument& argument);
void playWarning(AgentTurn& turn, const ScriptArgument& argument);
void playSlowAnswer(AgentTurn& turn, const ScriptArgument& argument);
void playCrash(AgentTurn& turn, const ScriptArgument& argument);
void playJSONAnswer(AgentTurn& turn, const ScriptArgument& argument);

}  // namespace ormel::simulator
