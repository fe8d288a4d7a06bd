#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Agent/AgentTurn.h"
#include "ormel-simulator/Agent/ScriptArgument.h"

namespace ormel::simulator {

/// The agent's behaviour when the user's input contains certain words.
struct TurnScript {
  /// In lower case, with one space between words.
  std::string_view words;
  /// The argument that follows the words, for the help; empty if there is none.
  std::string_view argument;
  std::string_view effect;
  void (*play)(AgentTurn& turn, const ScriptArgument& argument);
};

/// All of them.
std::span<const TurnScript> turnScripts();

/// Adds the steps of the script whose words come first in the prompt, or those of a plain answer.
void playPrompt(AgentTurn& turn);

void playReview(AgentTurn& turn, const JSONValue& target);
void playCompaction(AgentTurn& turn);

/// A command that the user runs by hand: without approval, pause or comment.
void playUsersCommand(AgentTurn& turn, const std::string& command);

/// The table as a text for people.
std::string turnScriptsHelp();

}  // namespace ormel::simulator
