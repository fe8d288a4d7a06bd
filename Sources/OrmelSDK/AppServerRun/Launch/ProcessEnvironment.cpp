#include "OrmelSDK/AppServerRun/Launch/ProcessEnvironment.h"

#include <string_view>

#include "OrmelSDK/Platform/HostProcess.h"

namespace ormel::detail::ProcessEnvironment {

std::map<std::string, std::string> current() { return fromBlock(environmentBlock()); }

std::map<std::string, std::string> fromBlock(const char* const* block) {
  std::map<std::string, std::string> variables;
  if (!block) return variables;
  for (; *block; ++block) {
    const std::string_view entry(*block);
    const std::size_t separator = entry.find('=');
    if (separator == std::string_view::npos) continue;
    variables.insert_or_assign(std::string(entry.substr(0, separator)), std::string(entry.substr(separator + 1)));
  }
  return variables;
}

}  // namespace ormel::detail::ProcessEnvironment
