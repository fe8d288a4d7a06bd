#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Records/CommandRecords.h"
#include "Support/TemporaryDirectory.h"
#include "ormel-simulator/Agent/RawAgent.h"

namespace ormel::simulator {

inline JSONObjectBuilder paramsOf(std::initializer_list<JSONMemberInit> members) {
  JSONObjectBuilder params;
  for (const JSONMemberInit& member : members) params.set(member.key, member.value);
  return params;
}

inline JSONValue textsOf(const std::vector<std::string>& texts) {
  return JSONValue::array(std::vector<JSONValue>(texts.begin(), texts.end()));
}

/// The agent, with a folder of its own for files.
class MachineAgent {
 public:
  explicit MachineAgent(std::vector<std::string> moreEnvironment = {})
      : agent_(environment(folder_.addDirectory("files"), std::move(moreEnvironment))) {
    agent_.initialize();
  }

  RawAgent* operator->() noexcept { return &agent_; }

  /// The folder of the files as it is outside of the agent.
  std::string files(const std::string& name) const { return folder_ / ("files/" + name); }
  /// The folder beside it, which is not for the agent.
  const testing::TemporaryDirectory& outside() const noexcept { return folder_; }

  /// Begins to run a command.
  int execute(const std::vector<std::string>& command, JSONObjectBuilder params = {}) {
    return agent_.ask("command/exec", params.set("command", textsOf(command)));
  }

  CommandExecResponse awaitEnd(int id) {
    const JSONValue answer = agent_.awaitAnswer(id);
    EXPECT_EQ(answer.find("error"), nullptr) << answer;
    return decode<CommandExecResponse>(anyMember(answer, "result"));
  }

  CommandExecResponse run(const std::vector<std::string>& command, const JSONObjectBuilder& params = {}) {
    return awaitEnd(execute(command, params));
  }
  CommandExecResponse runScript(const std::string& script, const JSONObjectBuilder& params = {}) {
    return run({"sh", "-c", script}, params);
  }

 private:
  static std::vector<std::string> environment(const std::string& files, std::vector<std::string> more) {
    more.insert(more.end(), {"PATH=/usr/local/bin:/usr/bin:/bin", "ORMEL_SIMULATOR_PACE_MS=0",
                             "ORMEL_SIMULATOR_FORGET=1", "ORMEL_SIMULATOR_FILES=" + files});
    return more;
  }

  testing::TemporaryDirectory folder_;
  RawAgent agent_;
};

}  // namespace ormel::simulator
