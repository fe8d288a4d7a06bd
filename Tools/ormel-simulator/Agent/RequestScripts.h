#pragma once

#include <string>

#include "ormel-simulator/Agent/AgentTurn.h"

// Turns in which the agent does something, for most of which it asks the client.
namespace ormel::simulator {

void playCommand(AgentTurn& turn, const std::string& command);
void playListFiles(AgentTurn& turn, const std::string& argument);
void playBigOutput(AgentTurn& turn, const std::string& megabytes);
void playEdit(AgentTurn& turn, const std::string& file);
void playWrite(AgentTurn& turn, const std::string& file);
void playQuestions(AgentTurn& turn, const std::string& argument);
void playTool(AgentTurn& turn, const std::string& name);
void playForm(AgentTurn& turn, const std::string& argument);
void playPermissions(AgentTurn& turn, const std::string& argument);

}  // namespace ormel::simulator
