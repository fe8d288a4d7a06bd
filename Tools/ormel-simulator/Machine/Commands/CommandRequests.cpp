#include "ormel-simulator/Machine/Commands/CommandRequests.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "ormel-simulator/Machine/Base64.h"
#include "ormel-simulator/Machine/Commands/CommandEnvironment.h"
#include "ormel-simulator/Requests/NewID.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

/// As the program `timeout` has it.
constexpr int timeoutExitCode = 124;
constexpr std::size_t greatestUnreadInput = std::size_t{16} << 20;
constexpr std::int64_t longestTimeLimit = 1'000'000'000;

unsigned short terminalLength(const RequestParams& size, const char* key) {
  constexpr std::int64_t greatest = std::numeric_limits<unsigned short>::max();
  const auto length = size.countIfGiven(key);
  if (!length || *length > greatest) {
    throw Refusal(invalidParams, "size must have rows and cols, whole numbers from 1 to " + std::to_string(greatest));
  }
  return static_cast<unsigned short>(*length);
}

TerminalSize terminalSize(const RequestParams& params) {
  const JSONValue* size = params.json().find("size");
  if (!size || !size->objectValue()) throw Refusal(invalidParams, "size must be an object with rows and cols");
  const RequestParams members(*size);
  return {terminalLength(members, "rows"), terminalLength(members, "cols")};
}

CommandLaunch launchOf(const RequestParams& params, bool takesInput) {
  CommandLaunch launch;
  launch.arguments = params.texts("command");
  if (launch.arguments.empty() || launch.arguments.front().empty()) {
    throw Refusal(invalidParams, "command must begin with the name of a program");
  }
  launch.folder = params.textIfGiven("cwd").value_or("");
  launch.environment = environmentForCommands();
  launch.takesInput = takesInput;
  if (params.flag("tty")) launch.terminal = params.has("size") ? terminalSize(params) : TerminalSize();
  return launch;
}

JSONValue responseOf(const CommandResult& result, std::chrono::milliseconds timeLimit) {
  std::string error = result.error.text();
  if (result.hasTimedOut) {
    if (!error.empty() && !error.ends_with('\n')) error += '\n';
    error += "ormel-simulator: the command was ended, since it ran longer than " + std::to_string(timeLimit.count()) +
             " milliseconds\n";
  }
  const int exitCode = result.hasTimedOut ? timeoutExitCode : result.exitCode.value_or(-1);
  return JSONValue::object({{"exitCode", exitCode}, {"stdout", result.output.text()}, {"stderr", error}});
}

}  // namespace

void CommandRequests::add(RequestTable& table) {
  table["command/exec"] = [this](const JSONValue& params, const LaterAnswer& answer) { execute(params, answer); };
  const auto add = [&](const char* method, JSONValue (CommandRequests::*handle)(const RequestParams&)) {
    table[method] = [this, handle](const JSONValue& params) { return (this->*handle)(RequestParams(params)); };
  };
  add("command/exec/write", &CommandRequests::write);
  add("command/exec/resize", &CommandRequests::resize);
  add("command/exec/terminate", &CommandRequests::terminate);
}

void CommandRequests::execute(const JSONValue& params, const LaterAnswer& answer) {
  const RequestParams read(params);
  const auto givenID = read.textIfGiven("processId");
  const std::string id = givenID.value_or(newID());
  if (commands_.contains(id)) throw Refusal(invalidRequest, "a command with the processId " + id + " runs already");
  const auto limit = read.countIfGiven("timeoutMs");
  const std::chrono::milliseconds timeLimit(std::min(limit.value_or(longestTimeLimit), longestTimeLimit));
  // Only a client that can name the command can write to it.
  const CommandLaunch launch = launchOf(read, givenID.has_value());
  const bool streams = read.flag("streamStdoutStderr");
  Command& command = running_.start(launch, limit ? std::optional(timeLimit) : std::nullopt,
                                    streams ? reporterOf(id) : Command::OutputHandler(),
                                    [this, id, timeLimit, answer](const CommandResult& result) {
                                      commands_.erase(id);
                                      if (!result.exitCode && !result.hasTimedOut) {
                                        answer.refuse({internalError, "nobody can tell how the command ended"});
                                      } else {
                                        answer.give(responseOf(result, timeLimit));
                                      }
                                    });
  commands_.emplace(id, &command);
}

Command::OutputHandler CommandRequests::reporterOf(const std::string& id) {
  return [this, id](std::string_view stream, std::string_view bytes, bool capReached) {
    client_.notify(
        "command/exec/outputDelta",
        JSONValue::object(
            {{"processId", id}, {"stream", stream}, {"deltaBase64", base64Of(bytes)}, {"capReached", capReached}}));
  };
}

JSONValue CommandRequests::write(const RequestParams& params) {
  Command& command = addressed(params);
  const JSONValue* delta = params.json().find("deltaBase64");
  const bool isGiven = delta && !delta->isNull();
  const auto bytes = isGiven ? bytesOfBase64(delta->stringValue().value_or("?")) : std::optional<std::string>("");
  if (!bytes) throw Refusal(invalidParams, "deltaBase64 must be a text in Base64");
  const bool closes = params.flag("closeStdin");
  if (!bytes->empty() && !command.acceptsInput()) throw Refusal(invalidRequest, "the command's input is closed");
  if (command.unreadInput() + bytes->size() > greatestUnreadInput) {
    throw Refusal(invalidRequest, "the command does not read what was written before");
  }
  command.write(*bytes);
  if (closes) command.closeInput();
  return JSONValue::object();
}

JSONValue CommandRequests::resize(const RequestParams& params) {
  Command& command = addressed(params);
  command.resize(terminalSize(params));
  return JSONValue::object();
}

JSONValue CommandRequests::terminate(const RequestParams& params) {
  addressed(params).terminate();
  return JSONValue::object();
}

Command& CommandRequests::addressed(const RequestParams& params) {
  const std::string id = params.text("processId");
  const auto found = commands_.find(id);
  if (found == commands_.end()) throw Refusal(invalidRequest, "no command with the processId " + id + " runs");
  return *found->second;
}

}  // namespace ormel::simulator
