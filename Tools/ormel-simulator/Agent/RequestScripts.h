#pragma once

#include "ormel-simulator/Agent/AgentTurn.h"
#include "ormel-simulator/Agent/ScriptArgument.h"

// Turns in which the agent does something, for most of which it asks the client.
namespace ormel::simulator {

void playCommand(AgentTurn& turn, const ScriptArgument& argument);
void playListFiles(AgentTurn& turn, const ScriptArgument& argument);
void playBigOutput(AgentTurn& turn, const ScriptArgument& argument);
void playEdit(AgentTurn& turn, const ScriptArgument& argument);
void playWrite(AgentTurn& turn, const ScriptArgument& argument);
void playQuestions(AgentTurn& turn, const ScriptArgument& argument);
void playTool(AgentTurn& turn, const ScriptArgument& argument);
void playForm(AgentTurn& turn, const ScriptArgument& argument);
void playPermissions(AgentTurn& turn, const ScriptArgument& argument);
void playSignIn(AgentTurn& turn, const ScriptArgument& argument);
void playAttestation(AgentTurn& turn, const ScriptArgument& argument);
void playSearch(AgentTurn& turn, const ScriptArgument& argument);
void playLookUp(AgentTurn& turn, const ScriptArgument& argument);

}  // namespace ormel::simulator
