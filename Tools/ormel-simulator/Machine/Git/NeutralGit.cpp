#include "ormel-simulator/Machine/Git/NeutralGit.h"

#include <string_view>
#include <utility>

#include "ormel-simulator/Machine/Commands/CommandEnvironment.h"

namespace ormel::simulator {

namespace {

using Setting = std::pair<std::string, std::string>;

std::vector<Setting> settingsOf(const std::vector<std::string>& emptySettings) {
  std::vector<Setting> settings = {{"core.fsmonitor", "false"},        {"core.hooksPath", "/dev/null"},
                                   {"core.untrackedCache", "false"},   {"core.attributesFile", "/dev/null"},
                                   {"core.excludesFile", "/dev/null"}, {"diff.noprefix", "false"},
                                   {"diff.mnemonicPrefix", "false"},   {"diff.orderFile", "/dev/null"}};
  for (const std::string& name : emptySettings) settings.emplace_back(name, "");
  return settings;
}

}  // namespace

CommandLaunch neutralGit(const std::string& folder, std::vector<std::string> arguments,
                         const std::vector<std::string>& emptySettings) {
  CommandLaunch launch;
  launch.arguments = std::move(arguments);
  launch.arguments.insert(launch.arguments.begin(), {"git", "--no-pager"});
  launch.folder = folder;
  for (std::string& variable : environmentForCommands()) {
    const bool isNeutral = !variable.starts_with("GIT_") && !variable.starts_with("LC_");
    if (isNeutral) launch.environment.push_back(std::move(variable));
  }
  launch.environment.insert(
      launch.environment.end(),
      {"GIT_CONFIG_NOSYSTEM=1", "GIT_CONFIG_GLOBAL=/dev/null", "GIT_TERMINAL_PROMPT=0", "GIT_OPTIONAL_LOCKS=0",
       "GIT_ALLOW_PROTOCOL=none", "GIT_NO_LAZY_FETCH=1", "GIT_ATTR_NOSYSTEM=1", "LC_ALL=C"});
  const std::vector<Setting> settings = settingsOf(emptySettings);
  launch.environment.push_back("GIT_CONFIG_COUNT=" + std::to_string(settings.size()));
  for (std::size_t index = 0; index < settings.size(); ++index) {
    const std::string number = std::to_string(index);
    launch.environment.push_back("GIT_CONFIG_KEY_" + number + "=" + settings[index].first);
    launch.environment.push_back("GIT_CONFIG_VALUE_" + number + "=" + settings[index].second);
  }
  return launch;
}

}  // namespace ormel::simulator
