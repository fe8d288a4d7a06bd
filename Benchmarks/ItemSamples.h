#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ormel::benchmarks {

struct ItemSample {
  std::string_view name;
  std::string text;
};

/// An item of each kind in the sizes that a turn brings.
inline std::vector<ItemSample> itemSamples() {
  const std::string paragraph(600, 'p');
  return {
      {"userMessage",
       R"({"type":"userMessage","id":"item_0c5e9f2a4b","clientId":"client-1","content":[)"
       R"({"type":"text","text":"Please fix the flaky test"},{"type":"localImage","path":"/tmp/a.png"}]})"},
      {"hookPrompt", R"({"type":"hookPrompt","id":"item_0c5e9f2a4b","fragments":[{"text":"Remember the style guide",)"
                     R"("hookRunId":"hook-run-0001"}]})"},
      {"agentMessage",
       R"({"type":"agentMessage","id":"msg_0c5e9f2a4b","text":")" + paragraph + R"(","phase":"final_answer"})"},
      {"plan", R"({"type":"plan","id":"item_0c5e9f2a4b","text":")" + paragraph + R"("})"},
      {"reasoning", R"({"type":"reasoning","id":"rs_0c5e9f2a4b","summary":["**Looking at the tests**"],"content":[")" +
                        paragraph + R"("]})"},
      {"enteredReviewMode",
       R"({"type":"enteredReviewMode","id":"item_0c5e9f2a4b","review":"the current changes of the branch"})"},
      {"exitedReviewMode",
       R"({"type":"exitedReviewMode","id":"item_0c5e9f2a4b","review":"the current changes of the branch"})"},
      {"contextCompaction", R"({"type":"contextCompaction","id":"item_0c5e9f2a4b_compaction"})"},
      {"commandExecution", R"({"type":"commandExecution","id":"call_0c5e9f2a4b","command":"cmake --build build",)"
                           R"("cwd":"/home/user/project","process_id":"12345","command_actions":[{"type":"unknown",)"
                           R"("command":"cmake --build build"}],"aggregated_output":")" +
                               paragraph + R"(","exit_code":0,"status":"completed","duration_ms":1234})"},
      {"fileChange", R"({"type":"fileChange","id":"call_0c5e9f2a4b","changes":[{"path":"/home/user/project/a.cpp",)"
                     R"("kind":{"type":"update"}},{"path":"/home/user/project/b.cpp","kind":"add"}],)"
                     R"("status":"completed"})"},
      {"mcpToolCall", R"({"type":"mcpToolCall","id":"call_0c5e9f2a4b","server":"browser","tool":"open_page",)"
                      R"("arguments":{"url":"http://localhost/page","wait":true},"result":{"content":[{"type":"text",)"
                      R"("text":"A page"}],"structuredContent":{"title":"A page"}},"status":"completed",)"
                      R"("duration_ms":321})"},
      {"dynamicToolCall",
       R"({"type":"dynamicToolCall","id":"call_0c5e9f2a4b","namespace":"app","tool":"look_up",)"
       R"("arguments":{"query":"something"},"status":"completed","content_items":[)"
       R"({"type":"inputText","text":"An answer of some length"}],"duration_ms":12,"success":true})"},
      {"collabAgentToolCall", R"({"type":"collabAgentToolCall","id":"call_0c5e9f2a4b","tool":"spawnAgent",)"
                              R"("status":"completed","senderThreadId":"0199a213-81c0-7800-8aa1-bbab2a035a53",)"
                              R"("receiverThreadIds":["0199a213-8243-7a51-9c2d-6b6f3c1d8e4f"],"prompt":"Write tests",)"
                              R"("agentsStates":{"0199a213-8243-7a51-9c2d-6b6f3c1d8e4f":{"status":"running"}}})"},
      {"webSearch", R"({"type":"webSearch","id":"ws_0c5e9f2a4b","query":"how to write a compiler",)"
                    R"("action":{"type":"search","query":"how to write a compiler"}})"},
      {"imageView", R"({"type":"imageView","id":"call_0c5e9f2a4b","path":"/home/user/project/screen.png"})"},
      {"imageGeneration", R"({"type":"imageGeneration","id":"ig_0c5e9f2a4b","status":"completed",)"
                          R"("revised_prompt":"A small house in the hills","result":")" +
                              paragraph + R"(","saved_path":"/home/user/project/house.png"})"},
      {"todoList",
       R"({"type":"todoList","id":"turn-plan:0199a213","items":[{"text":"Read the tests","completed":true},)"
       R"({"text":"Fix the flaky one","completed":false},{"text":"Run all","completed":false}]})"},
      {"sleep", R"({"type":"sleep","id":"call_0c5e9f2a4b","durationMs":5000})"},
      {"subAgentActivity", R"({"type":"subAgentActivity","id":"item_0c5e9f2a4b","kind":"interacted",)"
                           R"("agentThreadId":"0199a213-81c0-7800-8aa1-bbab2a035a53","agentPath":"/root/tester"})"},
      {"error", R"({"type":"error","id":"item_0c5e9f2a4b","message":"The model is busy; trying again in a while"})"},
  };
}

}  // namespace ormel::benchmarks
