#include <exception>
#include <utility>
#include <variant>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ServerRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunFailure.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLife.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

constexpr const char* submissionFailed = "Failed to submit request_user_input response: ";

JSONValue answersObject(const std::map<std::string, std::vector<std::string>>& answers) {
  JSONObjectBuilder object;
  for (const auto& [questionID, texts] : answers) {
    const std::vector<JSONValue> list(texts.begin(), texts.end());
    object.set(questionID, JSONValue::object({{"answers", JSONValue::array(list)}}));
  }
  return JSONValue::object({{"answers", object.build()}});
}

}  // namespace

Task<void> ServerRequestDispatcher::submitUserInput(std::string itemID,
                                                    std::map<std::string, std::vector<std::string>> answers,
                                                    std::optional<std::uint64_t> expectedOperationGeneration) {
  return submit(run_.life.hold(), std::move(itemID), std::move(answers), expectedOperationGeneration);
}

Task<void> ServerRequestDispatcher::submit([[maybe_unused]] std::shared_ptr<void> life, std::string itemID,
                                           std::map<std::string, std::vector<std::string>> answers,
                                           std::optional<std::uint64_t> expectedOperationGeneration) {
  co_await run_.life.strand().enter();
  const auto generation = run_.stream.currentOperationGeneration();
  const bool isExpected = !expectedOperationGeneration || expectedOperationGeneration == generation;
  if (!generation || !isExpected || !run_.stream.isPending()) {
    throw ThreadRunError::streamError("No active turn for request_user_input response");
  }
  const auto requestID = run_.serverRequests.findUserInput(itemID);
  if (!requestID) {
    throw ThreadRunError::streamError("No pending request_user_input call for item: " + itemID);
  }
  const JSONValue result = answersObject(answers);
  try {
    respondToServerRequest(run_.transport, *requestID, result);
  } catch (...) {
    throw ThreadRunError::streamError(submissionFailed + describedFailure(std::current_exception()).message);
  }
  run_.serverRequests.removeUserInput(itemID);
  completeUserInputItem(itemID, result, *generation);
}

void ServerRequestDispatcher::completeUserInputItem(const std::string& itemID, const JSONValue& answers,
                                                    std::uint64_t operationGeneration) {
  const ThreadItem* stored = run_.items.find(itemID);
  const auto* call = stored ? std::get_if<McpToolCallItem>(&stored->value) : nullptr;
  if (!call) return;
  McpToolCallItem completed = *call;
  completed.result = McpToolCallResult{{answers}, std::nullopt, std::nullopt};
  completed.error.reset();
  completed.status = McpToolCallStatus::completed;
  run_.items.store(completed);
  if (run_.stream.currentOperationGeneration() != operationGeneration) {
    throw ThreadRunError::streamError(submissionFailed + std::string("The app-server operation is no longer current"));
  }
  run_.stream.emitEvent(ItemCompletedEvent{std::move(completed), std::nullopt, std::nullopt, std::nullopt});
}

}  // namespace ormel::detail
