#include "ormel-simulator/Machine/Commands/CommandEnvironment.h"

#include <string_view>

#include "OrmelSDK/Platform/HostProcess.h"

namespace ormel::simulator {

std::vector<std::string> environmentForCommands() {
  std::vector<std::string> variables;
  for (const char* const* entry = detail::environmentBlock(); entry && *entry; ++entry) {
    if (!std::string_view(*entry).starts_with("ORMEL_API_KEY=")) variables.emplace_back(*entry);
  }
  return variables;
}

}  // namespace ormel::simulator
