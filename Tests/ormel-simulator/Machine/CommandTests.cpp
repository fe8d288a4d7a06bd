#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Support/Fifo.h"
#include "ormel-simulator/Machine/Base64.h"
#include "ormel-simulator/Machine/MachineAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::size_t megabyte = std::size_t{1} << 20;

JSONObjectBuilder named(const std::string& id) { return paramsOf({{"processId", id}}); }

JSONObjectBuilder streamed(const std::string& id) { return named(id).set("streamStdoutStderr", true); }

/// The output of a command's stream from now on, at least `size` bytes of it.
std::string awaitOutput(MachineAgent& agent, const std::string& stream, std::size_t size) {
  std::string said;
  while (said.size() < size) {
    const JSONValue params = anyMember(agent->await("command/exec/outputDelta"), "params");
    if (textMember(params, "stream") == stream) said += *bytesOfBase64(*textMember(params, "deltaBase64"));
  }
  return said;
}

TEST(MachineCommands, EndAsTheProgramDoes) {
  MachineAgent agent;
  struct Row {
    std::vector<std::string> command;
    std::int64_t exitCode;
    std::string output;
    std::string error;
  };
  const Row rows[] = {
      {{"true"}, 0, "", ""},
      {{"sh", "-c", "exit 255"}, 255, "", ""},
      {{"/bin/echo", "a b", "", "*"}, 0, "a b  *\n", ""},
      {{"sh", "-c", "echo out; echo err >&2; exit 3"}, 3, "out\n", "err\n"},
      {{"sh", "-c", "kill -TERM $$"}, 128 + 15, "", ""},
      {{"sh", "-c", "kill -KILL $$"}, 128 + 9, "", ""},
      // There is nothing to read for a command that nobody can name.
      {{"cat"}, 0, "", ""},
      {{"printf", "\\377\\303"}, 0, "\xEF\xBF\xBD\xEF\xBF\xBD", ""},
      // No descriptor besides its own streams, but the one that the listing takes.
      {{"ls", "/dev/fd/"}, 0, "0\n1\n2\n3\n", ""},
  };
  for (const Row& row : rows) {
    const auto ended = agent.run(row.command);
    EXPECT_EQ(ended.exitCode, row.exitCode) << row.command.back();
    EXPECT_EQ(ended.stdout, row.output) << row.command.back();
    EXPECT_EQ(ended.stderr, row.error) << row.command.back();
  }
}

TEST(MachineCommands, AreHeardToTheLastWordThoughTheyEndUnheard) {
  MachineAgent agent;
  const auto line = [](int id, const std::vector<std::string>& command) {
    const JSONValue params = JSONValue::object({{"command", textsOf(command)}});
    return JSONValue::object({{"id", id}, {"method", "command/exec"}, {"params", params}}).encode() + "\n";
  };
  // The agent reads all of it at once, and is busy until the first command has ended.
  std::string lines = line(1, {"printf", "%60000s", ""});
  for (int id = 2; id < 60; ++id) lines += line(id, {"no-such-program"});
  agent->child().write(lines);
  EXPECT_EQ(agent.awaitEnd(1).stdout, std::string(60'000, ' '));
}

TEST(MachineCommands, RunInTheFolderThatIsAskedForWithoutTheClientsKey) {
  MachineAgent agent({"ORMEL_API_KEY=secret", "SOMETHING=else"});
  const std::string folder = agent.outside().addDirectory("some where");
  EXPECT_EQ(agent.run({"pwd", "-P"}, paramsOf({{"cwd", folder}})).stdout, folder + "\n");
  const std::string environment = agent.run({"env"}).stdout;
  EXPECT_THAT(environment, HasSubstr("SOMETHING=else\n"));
  EXPECT_THAT(environment, Not(HasSubstr("secret")));
}

TEST(MachineCommands, AreRefusedByASentence) {
  MachineAgent agent;
  struct Row {
    const char* method;
    JSONObjectBuilder params;
    std::string refusal;
  };
  const JSONValue command = textsOf({"true"});
  const std::string noProgram = "-32602 command must begin with the name of a program";
  const std::string noSize = "-32602 size must have rows and cols, whole numbers from 1 to 65535";
  const Row rows[] = {
      {"command/exec", {}, "-32602 command must be a list of texts"},
      {"command/exec", paramsOf({{"command", "true"}}), "-32602 command must be a list of texts"},
      {"command/exec", paramsOf({{"command", JSONValue::array()}}), noProgram},
      {"command/exec", paramsOf({{"command", textsOf({""})}}), noProgram},
      {"command/exec", paramsOf({{"command", JSONValue::array({std::string_view("a\0b", 3)})}}),
       "-32602 an argument and a folder cannot have a zero byte"},
      {"command/exec", paramsOf({{"command", textsOf({"no-such-program"})}}),
       "-32600 cannot run no-such-program: No such file or directory"},
      {"command/exec", paramsOf({{"command", textsOf({"/dev/null"})}}),
       "-32600 cannot run /dev/null: Permission denied"},
      {"command/exec", paramsOf({{"command", command}, {"cwd", "/no/such"}}),
       "-32600 cannot run in the folder /no/such: No such file or directory"},
      {"command/exec", paramsOf({{"command", command}, {"timeoutMs", 0}}),
       "-32602 timeoutMs must be a whole number from 1 on"},
      {"command/exec", paramsOf({{"command", command}, {"streamStdoutStderr", 1}}),
       "-32602 streamStdoutStderr must be true or false"},
      {"command/exec", paramsOf({{"command", command}, {"processId", 1}}),
       "-32602 processId must be a text that is not empty"},
      {"command/exec/write", named("p"), "-32600 no command with the processId p runs"},
      {"command/exec/resize", named("p"), "-32600 no command with the processId p runs"},
      {"command/exec/terminate", named("p"), "-32600 no command with the processId p runs"},
      {"command/exec/terminate", {}, "-32602 processId must be a text that is not empty"},
      {"command/exec/write", named("runs").set("deltaBase64", "?"), "-32602 deltaBase64 must be a text in Base64"},
      {"command/exec/resize", named("runs"), "-32602 size must be an object with rows and cols"},
      {"command/exec/resize", named("runs").set("size", JSONValue::object({{"rows", 1}})), noSize},
      {"command/exec/resize", named("runs").set("size", JSONValue::object({{"rows", 1}, {"cols", 70000}})), noSize},
  };
  const int runs = agent.execute({"cat"}, named("runs"));
  for (const Row& row : rows) {
    EXPECT_EQ(agent->refusal(row.method, row.params), row.refusal) << row.params.build();
  }
  agent->result("command/exec/write", named("runs").set("closeStdin", true));
  EXPECT_EQ(agent.awaitEnd(runs).exitCode, 0);
}

TEST(MachineCommands, LetOtherRequestsBeAnsweredMeanwhile) {
  MachineAgent agent;
  testing::Fifo gate;
  const int first = agent.execute({"cat", gate.path()});
  const int second = agent.execute({"echo", "second"});
  agent->result("fs/createDirectory", paramsOf({{"path", "d"}}));
  EXPECT_EQ(agent.awaitEnd(second).stdout, "second\n");
  EXPECT_EQ(agent->result("fs/readDirectory", paramsOf({{"path", "d"}})),
            JSONValue::object({{"entries", JSONValue::array()}}));
  gate.release();
  EXPECT_EQ(agent.awaitEnd(first).exitCode, 0);
}

TEST(MachineCommands, ReadWhatIsWrittenToThem) {
  MachineAgent agent;
  // More than a pipe holds, so that it is given piece by piece.
  const std::string much(300'000, 'm');
  const int id = agent.execute({"cat"}, named("cat"));
  agent->result("command/exec/write", named("cat").set("deltaBase64", base64Of("one\n")));
  agent->result("command/exec/write", named("cat"));
  agent->result("command/exec/write", named("cat").set("deltaBase64", base64Of(much)).set("closeStdin", true));
  EXPECT_EQ(agent.awaitEnd(id).stdout, "one\n" + much);
  const int closed = agent.execute({"sh", "-c", "cat; exec sleep 1000"}, named("closed"));
  agent->result("command/exec/write", named("closed").set("closeStdin", true));
  EXPECT_EQ(agent->refusal("command/exec/write", named("closed").set("deltaBase64", "eA==")),
            "-32600 the command's input is closed");
  agent->result("command/exec/terminate", named("closed"));
  agent.awaitEnd(closed);
}

TEST(MachineCommands, SurviveNobodyReadingTheirInput) {
  MachineAgent agent;
  const int id = agent.execute({"sh", "-c", "exec <&-; echo ready; exec sleep 1000"}, streamed("deaf"));
  awaitOutput(agent, "stdout", 6);
  agent->result("command/exec/write", named("deaf").set("deltaBase64", base64Of("hello")));
  agent->result("command/exec/terminate", named("deaf"));
  EXPECT_EQ(agent.awaitEnd(id).exitCode, 128 + 15);
}

TEST(MachineCommands, RefuseInputThatPilesUp) {
  MachineAgent agent;
  const int id = agent.execute({"sleep", "1000"}, named("sleeper"));
  const JSONValue almostAll = base64Of(std::string(900'000, 'x'));
  agent->result("command/exec/write", named("sleeper").set("deltaBase64", almostAll));
  EXPECT_EQ(agent->refusal("command/exec/write", named("sleeper").set("deltaBase64", almostAll)),
            "-32600 the command does not read what was written before");
  agent->result("command/exec/terminate", named("sleeper"));
  agent.awaitEnd(id);
}

TEST(MachineCommands, AreNamedByTheClientAsLongAsTheyRun) {
  MachineAgent agent;
  const int id = agent.execute({"cat"}, named("same"));
  EXPECT_EQ(agent->refusal("command/exec", named("same").set("command", textsOf({"true"}))),
            "-32600 a command with the processId same runs already");
  agent->result("command/exec/write", named("same").set("closeStdin", true));
  EXPECT_EQ(agent.awaitEnd(id).exitCode, 0);
  EXPECT_EQ(agent.run({"true"}, named("same")).exitCode, 0);
}

TEST(MachineCommands, AreEndedWhenTheirTimeIsOver) {
  MachineAgent agent;
  const auto ended = agent.runScript("echo out; printf err >&2; exec sleep 1000", paramsOf({{"timeoutMs", 300}}));
  EXPECT_EQ(ended.exitCode, 124);
  EXPECT_EQ(ended.stdout, "out\n");
  EXPECT_EQ(ended.stderr, "err\normel-simulator: the command was ended, since it ran longer than 300 milliseconds\n");
  EXPECT_EQ(agent.run({"true"}, paramsOf({{"timeoutMs", 1e15}})).exitCode, 0);
}

TEST(MachineCommands, EndWhenTheyAreAskedToOrElseByForce) {
  MachineAgent agent;
  for (const auto& [script, exitCode] : {std::pair("echo ready; exec sleep 1000", 128 + 15),
                                         {"trap 'exit 7' TERM; echo ready; sleep 1000 & wait", 7},
                                         {"trap '' TERM; echo ready; sleep 1000; sleep 1000", 128 + 9}}) {
    const int id = agent.execute({"sh", "-c", script}, streamed("p"));
    awaitOutput(agent, "stdout", 6);
    agent->result("command/exec/terminate", named("p"));
    EXPECT_EQ(agent.awaitEnd(id).exitCode, exitCode) << script;
  }
}

TEST(MachineCommands, ShowTheirOutputAsItComes) {
  MachineAgent agent;
  const int id = agent.execute({"cat"}, streamed("p"));
  for (const std::string& text : {std::string("one\n"), std::string("\xff\x00two", 5)}) {
    agent->result("command/exec/write", named("p").set("deltaBase64", base64Of(text)));
    EXPECT_EQ(awaitOutput(agent, "stdout", text.size()), text);
  }
  agent->result("command/exec/write", named("p").set("closeStdin", true));
  EXPECT_THAT(agent.awaitEnd(id).stdout, StartsWith("one\n"));
  const int other = agent.execute({"sh", "-c", "echo oops >&2"}, streamed("q"));
  const JSONValue delta = anyMember(agent->await("command/exec/outputDelta"), "params");
  EXPECT_EQ(
      delta,
      JSONValue::object(
          {{"processId", "q"}, {"stream", "stderr"}, {"deltaBase64", base64Of("oops\n")}, {"capReached", false}}));
  EXPECT_EQ(agent.awaitEnd(other).stderr, "oops\n");
}

TEST(MachineCommands, CanBeNamedByWhatTheirOutputIsReportedWith) {
  MachineAgent agent;
  const int id = agent.execute({"sh", "-c", "echo; exec sleep 1000"}, paramsOf({{"streamStdoutStderr", true}}));
  const JSONValue delta = anyMember(agent->await("command/exec/outputDelta"), "params");
  agent->result("command/exec/terminate", named(textMember(delta, "processId").value_or("")));
  EXPECT_EQ(agent.awaitEnd(id).exitCode, 128 + 15);
}

TEST(MachineCommands, SayNoMoreThanOneMegabyteOfEachStream) {
  MachineAgent agent;
  const int id =
      agent.execute({"sh", "-c", "head -c 3000000 /dev/zero | tr '\\0' a; head -c 1048576 /dev/zero | tr '\\0' b >&2"},
                    streamed("p"));
  std::string streamedOutput;
  bool isCapped = false;
  while (!isCapped || streamedOutput.size() < megabyte) {
    const JSONValue params = anyMember(agent->await("command/exec/outputDelta"), "params");
    if (textMember(params, "stream") != "stdout") continue;
    EXPECT_FALSE(isCapped);
    streamedOutput += *bytesOfBase64(*textMember(params, "deltaBase64"));
    isCapped = flagMember(params, "capReached");
  }
  EXPECT_EQ(streamedOutput, std::string(megabyte, 'a'));
  const auto ended = agent.awaitEnd(id);
  EXPECT_EQ(ended.stdout, streamedOutput + "\n[1951424 more bytes were cut off]\n");
  EXPECT_EQ(ended.stderr, std::string(megabyte, 'b'));
}

TEST(MachineCommands, RunInATerminalIfAskedTo) {
  MachineAgent agent;
  const auto sized = [](int rows, int columns) { return JSONValue::object({{"rows", rows}, {"cols", columns}}); };
  EXPECT_EQ(agent
                .runScript("test -t 0 && test -t 1 && test -t 2 && stty size",
                           paramsOf({{"tty", true}, {"size", sized(40, 100)}}))
                .stdout,
            "40 100\r\n");
  const int id = agent.execute({"sh", "-c", "trap 'stty size' WINCH; echo ready; while ! read line; do :; done; cat"},
                               streamed("t").set("tty", true));
  awaitOutput(agent, "stdout", 7);
  agent->result("command/exec/resize", named("t").set("size", sized(50, 120)));
  EXPECT_THAT(awaitOutput(agent, "stdout", 8), "50 120\r\n");
  agent->result("command/exec/write", named("t").set("deltaBase64", base64Of("line\nmore\n")));
  agent->result("command/exec/write", named("t").set("closeStdin", true));
  const auto ended = agent.awaitEnd(id);
  EXPECT_EQ(ended.exitCode, 0);
  EXPECT_THAT(ended.stdout, EndsWith("more\r\n"));
}

TEST(MachineCommands, TakeAResizingWithoutATerminalForDone) {
  MachineAgent agent;
  const int id = agent.execute({"cat"}, named("p"));
  const JSONValue size = JSONValue::object({{"rows", 1}, {"cols", 65535}});
  EXPECT_EQ(agent->result("command/exec/resize", named("p").set("size", size)), JSONValue::object());
  agent->result("command/exec/write", named("p").set("closeStdin", true));
  EXPECT_EQ(agent.awaitEnd(id).exitCode, 0);
}

TEST(MachineCommands, CanBeUnknownToTheAgent) {
  MachineAgent agent({"ORMEL_SIMULATOR_WITHOUT=command/exec,fs/readFile"});
  EXPECT_EQ(agent->refusal("command/exec", paramsOf({{"command", textsOf({"true"})}})),
            "-32601 Method not found: command/exec");
  EXPECT_EQ(agent->refusal("fs/readFile", paramsOf({{"path", "a"}})), "-32601 Method not found: fs/readFile");
}

}  // namespace
}  // namespace ormel::simulator
