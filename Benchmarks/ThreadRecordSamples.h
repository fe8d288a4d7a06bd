#pragma once

#include <cstddef>
#include <string>

namespace ormel::benchmarks {

/// About `size` bytes of a reply to `thread/read`: a thread with many turns of the usual items.
inline std::string threadReadReply(std::size_t size) {
  std::string text =
      R"({"thread":{"id":"0199a213-81c0-7800-8aa1-bbab2a035a53","sessionId":"0199a213-81c0-7800-8aa1-bbab2a035a53",)"
      R"("preview":"Fix the flaky test","ephemeral":false,"modelProvider":"default","createdAt":1763697600,)"
      R"("updatedAt":1763697660,"status":{"type":"idle","activeFlags":[]},"path":"/home/user/sessions/thread.jsonl",)"
      R"("cwd":"/home/user/project","cliVersion":"1.2.3","source":"cli","gitInfo":{"sha":"2cd61b9","branch":"main",)"
      R"("originUrl":"ssh://host/project.git"},"name":null,"turns":[)";
  for (int id = 0; text.size() < size; ++id) {
    if (id > 0) text += ',';
    const std::string number = std::to_string(id);
    text += R"({"id":"turn-)" + number +
            R"(","itemsView":"full","status":"completed","error":null,"startedAt":1763697600.25,)"
            R"("completedAt":1763697609.5,"durationMs":9250,"items":[)"
            R"({"type":"userMessage","id":"user-)" +
            number +
            R"(","content":[{"type":"text","text":"Please look at the test that fails now and then, and fix it."}]},)"
            R"({"type":"reasoning","id":"reasoning-)" +
            number +
            R"(","summary":["Looking at the test","Finding the race"],"content":[]},)"
            R"({"type":"commandExecution","id":"command-)" +
            number +
            R"(","command":"ctest --output-on-failure","cwd":"/home/user/project","processId":"4242",)"
            R"("command_actions":[],"aggregatedOutput":"100% tests passed, 0 tests failed out of 250\n",)"
            R"("exitCode":0,"status":"completed"},)"
            R"({"type":"agentMessage","id":"message-)" +
            number +
            R"(","text":"The test waited for a fixed time. It now waits for the event itself, and passed 250 )"
            R"(times in a row.","phase":"final_answer"}]})";
  }
  return text + "]}}";
}

}  // namespace ormel::benchmarks
