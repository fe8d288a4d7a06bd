#pragma once

// The items once more, in the way of a user of nlohmann's library: plain records whose conversion its macros define.

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "OneOf.h"

namespace ormel::benchmarks::yardstick {

struct InputPart {
  std::string type, text, path;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(InputPart, type, text, path)

struct userMessage {
  std::string id, clientId;
  std::vector<InputPart> content;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(userMessage, id, clientId, content)

struct Fragment {
  std::string text, hookRunId;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Fragment, text, hookRunId)
struct hookPrompt {
  std::string id;
  std::vector<Fragment> fragments;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(hookPrompt, id, fragments)

struct agentMessage {
  std::string id, text, phase, delivery;
  Json memoryCitation, questions;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(agentMessage, id, text, phase, delivery, memoryCitation, questions)

struct plan {
  std::string id, text;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(plan, id, text)

struct reasoning {
  std::string id;
  std::vector<std::string> summary, content;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(reasoning, id, summary, content)

struct enteredReviewMode {
  std::string id, review;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(enteredReviewMode, id, review)
struct exitedReviewMode : enteredReviewMode {};

struct contextCompaction {
  std::string id;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(contextCompaction, id)

struct commandExecution {
  std::string id, command, cwd, process_id, aggregated_output, status;
  std::vector<Json> command_actions;
  std::int64_t exit_code = 0, duration_ms = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(commandExecution, id, command, cwd, process_id, command_actions,
                                                aggregated_output, exit_code, status, duration_ms)

struct Change {
  std::string path;
  Json kind;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Change, path, kind)
struct fileChange {
  std::string id, status;
  std::vector<Change> changes;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(fileChange, id, changes, status)

struct McpResult {
  std::vector<Json> content;
  Json structuredContent, _meta;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(McpResult, content, structuredContent, _meta)
struct mcpToolCall {
  std::string id, server, tool, mcpAppResourceUri, pluginId, status, progress_message;
  Json arguments, appContext, error;
  McpResult result;
  std::int64_t duration_ms = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(mcpToolCall, id, server, tool, arguments, mcpAppResourceUri, appContext,
                                                pluginId, result, error, status, duration_ms, progress_message)

struct ContentItem {
  std::string type, text, image_url;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(ContentItem, type, text, image_url)
// "namespace" cannot be a member's name, so the macro cannot read it.
struct dynamicToolCall {
  std::string id, tool, status;
  Json arguments;
  std::vector<ContentItem> content_items;
  std::int64_t duration_ms = 0;
  bool success = false;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(dynamicToolCall, id, tool, arguments, status, content_items,
                                                duration_ms, success)

struct AgentState {
  std::string status, message;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(AgentState, status, message)
struct collabAgentToolCall {
  std::string id, tool, status, senderThreadId, prompt, model, reasoningEffort;
  std::vector<std::string> receiverThreadIds;
  std::map<std::string, AgentState> agentsStates;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(collabAgentToolCall, id, tool, status, senderThreadId,
                                                receiverThreadIds, prompt, model, reasoningEffort, agentsStates)

struct webSearch {
  std::string id, query;
  Json action;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(webSearch, id, query, action)

struct imageView {
  std::string id, path;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(imageView, id, path)

struct imageGeneration {
  std::string id, status, revised_prompt, result, saved_path;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(imageGeneration, id, status, revised_prompt, result, saved_path)

struct Todo {
  std::string text;
  bool completed = false;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Todo, text, completed)
struct todoList {
  std::string id;
  std::vector<Todo> items;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(todoList, id, items)

struct sleep {
  std::string id;
  std::int64_t durationMs = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(sleep, id, durationMs)

struct subAgentActivity {
  std::string id, kind, agentThreadId, agentPath;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(subAgentActivity, id, kind, agentThreadId, agentPath)

struct error {
  std::string id, message;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(error, id, message)

inline constexpr TypeWords itemTypes[] = {{"userMessage", "user_message"},
                                          {"hookPrompt", "hook_prompt"},
                                          {"agentMessage", "agent_message"},
                                          {"plan"},
                                          {"reasoning"},
                                          {"enteredReviewMode", "entered_review_mode"},
                                          {"exitedReviewMode", "exited_review_mode"},
                                          {"contextCompaction", "context_compaction"},
                                          {"commandExecution", "command_execution"},
                                          {"fileChange", "file_change"},
                                          {"mcpToolCall", "mcp_tool_call"},
                                          {"dynamicToolCall", "dynamic_tool_call"},
                                          {"collabAgentToolCall", "collab_agent_tool_call"},
                                          {"webSearch", "web_search"},
                                          {"imageView", "image_view"},
                                          {"imageGeneration", "image_generation"},
                                          {"todoList", "todo_list"},
                                          {"sleep"},
                                          {"subAgentActivity", "sub_agent_activity"},
                                          {"error"}};

using Item =
    OneOf<itemTypes, userMessage, hookPrompt, agentMessage, plan, reasoning, enteredReviewMode, exitedReviewMode,
          contextCompaction, commandExecution, fileChange, mcpToolCall, dynamicToolCall, collabAgentToolCall, webSearch,
          imageView, imageGeneration, todoList, sleep, subAgentActivity, error>;

}  // namespace ormel::benchmarks::yardstick
