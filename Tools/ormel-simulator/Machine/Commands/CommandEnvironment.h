#pragma once

#include <string>
#include <vector>

namespace ormel::simulator {

/// The variables of this process as "NAME=value", but for the client's key, which no command needs.
std::vector<std::string> environmentForCommands();

}  // namespace ormel::simulator
