#include <exception>
#include <utility>
#include <variant>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
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

Task<void> AppServerTurnRun::submitUserInput(std::string itemID,
                                             std::map<std::string, std::vector<std::string>> answers,
                                             std::optional<std::uint64_t> expectedOperationGeneration) {
  return submitUserInputOn(shared_from_this(), std::move(itemID), std::move(answers), expectedOperationGeneration);
}

Task<void> AppServerTurnRun::submitUserInputOn(Self self, std::string itemID,
                                               std::map<std::string, std::vector<std::string>> answers,
                                               std::optional<std::uint64_t> expectedOperationGeneration) {
  co_await self->strand_.enter();
  const auto generation = self->stream_.currentOperationGeneration();
  const bool isExpected = !expectedOperationGeneration || expectedOperationGeneration == generation;
  if (!generation || !isExpected || !self->stream_.isPending()) {
    throw ThreadRunError::streamError("No active turn for request_user_input response");
  }
  const auto requestID = self->serverRequests_.findUserInput(itemID);
  if (!requestID) {
    throw ThreadRunError::streamError("No pending request_user_input call for item: " + itemID);
  }
  const JSONValue result = answersObject(answers);
  try {
    self->respondToServerRequest(*requestID, result);
  } catch (...) {
    throw ThreadRunError::streamError(submissionFailed + describedFailure(std::current_exception()).message);
  }
  self->serverRequests_.removeUserInput(itemID);
  self->completeUserInputItem(itemID, result, *generation);
}

void AppServerTurnRun::completeUserInputItem(const std::string& itemID, const JSONValue& answers,
                                             std::uint64_t operationGeneration) {
  const ThreadItem* stored = items_.find(itemID);
  const auto* call = stored ? std::get_if<McpToolCallItem>(&stored->value) : nullptr;
  if (!call) return;
  McpToolCallItem completed = *call;
  completed.result = McpToolCallResult{{answers}, std::nullopt, std::nullopt};
  completed.error.reset();
  completed.status = McpToolCallStatus::completed;
  items_.store(completed);
  if (stream_.currentOperationGeneration() != operationGeneration) {
    throw ThreadRunError::streamError(submissionFailed + std::string("The app-server operation is no longer current"));
  }
  stream_.emit(ItemCompletedEvent{std::move(completed), std::nullopt, std::nullopt, std::nullopt});
}

}  // namespace ormel::detail
