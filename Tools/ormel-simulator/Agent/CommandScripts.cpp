#include <algorithm>
#include <charconv>
#include <memory>
#include <utility>

#include "ormel-simulator/Agent/Approval.h"
#include "ormel-simulator/Agent/CannedCommand.h"
#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Agent/RequestScripts.h"
#include "ormel-simulator/Agent/TurnScripts.h"

namespace ormel::simulator {

namespace {

struct RunningCommand {
  AgentTurn& turn;
  std::string id;
  std::string command;

  JSONObjectBuilder item(const char* status) const {
    JSONObjectBuilder members;
    members.set("type", "commandExecution").set("id", id).set("command", command).set("cwd", turn.thread().choices.cwd);
    return members.set("status", status).set("commandActions", JSONValue::array());
  }

  JSONObjectBuilder endedItem(const CannedResult& result) const {
    JSONObjectBuilder members = item(result.exitCode == 0 ? "completed" : "failed");
    return members.set("aggregatedOutput", result.output).set("exitCode", result.exitCode).set("durationMs", 12);
  }

  JSONValue outputDelta(const std::string& text) const {
    return JSONValue::object({{"threadId", turn.thread().id}, {"turnId", turn.id()}, {"itemId", id}, {"delta", text}});
  }
};

void runCommand(const RunningCommand& command) {
  AgentTurn& turn = command.turn;
  const CannedResult result = cannedResult(command.command);
  for (const std::string& piece : wordPieces(result.output)) {
    turn.then([&turn, command, piece] {
      JSONObjectBuilder members;
      turn.notify("item/commandExecution/outputDelta", members.set("itemId", command.id).set("delta", piece));
    });
  }
  turn.then([&turn, command, result] { turn.completeItem(command.endedItem(result)); });
  turn.say("I ran \"" + command.command + "\"; its exit code was " + std::to_string(result.exitCode) +
           ". It said: " + trimmed(result.output));
}

void endUnapproved(const RunningCommand& command, Approval approval) {
  AgentTurn& turn = command.turn;
  turn.completeItem(command.item("declined"));
  if (approval == Approval::cancelled) return turn.finish("interrupted");
  turn.say("You declined \"" + command.command + "\", so I did not run it.");
}

}  // namespace

void playCommand(AgentTurn& turn, const ScriptArgument& argument) {
  const RunningCommand running{turn, turn.newItemID("command"), argument.line.empty() ? "ls" : argument.line};
  turn.then([&turn, running] {
    turn.startItem(running.item("inProgress"));
    JSONObjectBuilder members;
    members.set("itemId", running.id).set("command", running.command).set("cwd", turn.thread().choices.cwd);
    members.set("reason", "You asked me to run it");
    askApproval(turn, "item/commandExecution/requestApproval", members, [running](Approval approval) {
      if (approval == Approval::accepted) {
        runCommand(running);
      } else {
        endUnapproved(running, approval);
      }
    });
  });
}

void playUsersCommand(AgentTurn& turn, const std::string& command) {
  const RunningCommand running{turn, turn.newItemID("command"), command};
  turn.thenAfter(milliseconds(0), [&turn, running] {
    turn.startItem(running.item("inProgress").set("source", "userShell"));
    turn.completeItem(running.endedItem(cannedResult(running.command)).set("source", "userShell"));
  });
}

void playListFiles(AgentTurn& turn, const ScriptArgument&) { playCommand(turn, {"ls", "ls"}); }

void playBigOutput(AgentTurn& turn, const ScriptArgument& argument) {
  constexpr std::size_t bytesOfDelta = 4096;
  constexpr std::size_t deltasOfWrite = 16;
  constexpr std::size_t writesOfMegabyte = std::size_t{1024} * 1024 / bytesOfDelta / deltasOfWrite;
  constexpr unsigned mostMegabytes = 10'000;
  unsigned count = 1;
  const std::string& megabytes = argument.word;
  std::from_chars(megabytes.data(), megabytes.data() + megabytes.size(), count);
  count = std::min(count, mostMegabytes);

  const std::string size = std::to_string(count) + " MB";
  const RunningCommand running{turn, turn.newItemID("command"), "cat megabytes"};
  turn.then([&turn, running] { turn.startItem(running.item("inProgress")); });
  const std::string text(bytesOfDelta - 1, 'x');
  const JSONValue notification = JSONValue::object(
      {{"method", "item/commandExecution/outputDelta"}, {"params", running.outputDelta(text + "\n")}});
  std::string lines;
  for (std::size_t delta = 0; delta < deltasOfWrite; ++delta) lines += notification.encode() + "\n";
  const auto shared = std::make_shared<const std::string>(std::move(lines));
  for (std::size_t write = 0; write < count * writesOfMegabyte; ++write) {
    turn.thenAfter(milliseconds(0), [&turn, shared] { turn.write(*shared); });
  }
  turn.then(
      [&turn, running, size] { turn.completeItem(running.endedItem({"(" + size + ", not repeated here)\n", 0})); });
  turn.say("That was " + size + ".");
}

}  // namespace ormel::simulator
