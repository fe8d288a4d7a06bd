#pragma once

#include <string_view>

namespace ormel::tests {

/// One item of a known type, with every field under its first key.
struct ThreadItemSample {
  std::string_view camelCaseType;
  std::string_view snakeCaseType;
  /// The type that the item is written with; empty if none.
  std::string_view writtenType;
  /// The object without its type.
  std::string_view fields;
};

inline constexpr ThreadItemSample threadItemSamples[] = {
    {"userMessage", "user_message", "userMessage",
     R"({"id":"i","clientId":"c","content":[{"type":"text","text":"hello"}]})"},
    {"hookPrompt", "hook_prompt", "hook_prompt", R"({"id":"i","fragments":[{"text":"t","hookRunId":"h"}]})"},
    {"agentMessage", "agent_message", "agent_message",
     R"({"id":"i","text":"t","phase":"final_answer","memoryCitation":{"entries":[{"path":"p","lineStart":1,
         "lineEnd":2,"note":"n"}],"rolloutIds":["r"]},"delivery":"d","questions":[{"title":"q","options":["o"]}]})"},
    {"plan", "plan", "", R"({"id":"i","text":"t"})"},
    {"reasoning", "reasoning", "reasoning", R"({"id":"i","summary":["s"],"content":["c","d"]})"},
    {"enteredReviewMode", "entered_review_mode", "enteredReviewMode", R"({"id":"i","review":"r"})"},
    {"exitedReviewMode", "exited_review_mode", "exitedReviewMode", R"({"id":"i","review":"r"})"},
    {"contextCompaction", "context_compaction", "contextCompaction", R"({"id":"i"})"},
    {"commandExecution", "command_execution", "",
     R"({"id":"i","command":"ls","cwd":"/d","process_id":"1","command_actions":[{"type":"read"},null,1],
         "aggregated_output":"out","exit_code":-1,"status":"completed","duration_ms":12})"},
    {"fileChange", "file_change", "", R"({"id":"i","changes":[{"path":"p","kind":"add"}],"status":"in_progress"})"},
    {"mcpToolCall", "mcp_tool_call", "",
     R"({"id":"i","server":"s","tool":"t","arguments":{"a":1},"mcpAppResourceUri":"u",
         "appContext":{"connectorId":"c","linkId":"l","resourceUri":"r","appName":"n","templateId":"t",
         "actionName":"a"},"pluginId":"p","result":{"content":[1],"structured_content":{},"_meta":[]},
         "error":{"message":"m"},"status":"completed","duration_ms":1,"progress_message":"half"})"},
    {"dynamicToolCall", "dynamic_tool_call", "",
     R"({"id":"i","namespace":"n","tool":"t","arguments":null,"status":"completed",
         "content_items":[{"type":"inputText","text":"t"},{"type":"inputImage","image_url":"u"}],"duration_ms":1,
         "success":true})"},
    {"collabAgentToolCall", "collab_agent_tool_call", "",
     R"({"id":"i","tool":"spawnAgent","status":"completed","senderThreadId":"s","receiverThreadIds":["r"],"prompt":"p",
         "model":"m","reasoningEffort":"high","agentsStates":{"r":{"status":"running","message":"m"}}})"},
    {"webSearch", "web_search", "", R"({"id":"i","query":"q","action":{"type":"search"}})"},
    {"imageView", "image_view", "", R"({"id":"i","path":"p"})"},
    {"imageGeneration", "image_generation", "image_generation",
     R"({"id":"i","status":"done","revised_prompt":"p","result":"r","saved_path":"s"})"},
    {"todoList", "todo_list", "", R"({"id":"i","items":[{"text":"t","completed":true}]})"},
    {"sleep", "sleep", "sleep", R"({"id":"i","durationMs":5})"},
    {"subAgentActivity", "sub_agent_activity", "subAgentActivity",
     R"({"id":"i","kind":"started","agentThreadId":"t","agentPath":"p"})"},
    {"error", "error", "", R"({"id":"i","message":"m"})"},
};

}  // namespace ormel::tests
