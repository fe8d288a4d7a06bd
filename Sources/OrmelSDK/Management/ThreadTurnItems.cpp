#include "OrmelSDK/Management/ThreadTurnItems.h"

#include <optional>
#include <utility>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerRunSupport.h"
#include "OrmelSDK/Management/ThreadCalls.h"

namespace ormel::detail {

namespace {

/// The page, or nothing if the server does not know the call.
Task<std::optional<ThreadTurnItemsListResponse>> pageIfKnown(Task<ThreadTurnItemsListResponse> performing) {
  try {
    auto page = co_await std::move(performing);
    co_return std::move(page);
  } catch (const AppServerRPCError& error) {
    if (!isUnknownMethodCompatibilityError(error.code(), error.message())) throw;
  }
  co_return std::nullopt;
}

ThreadTurnItemsListResponse wrapped(LegacyThreadTurnItemsListResponse legacy, const std::string& turnID) {
  ThreadTurnItemsListResponse page;
  for (ThreadItem& item : legacy.data) page.data.push_back(ThreadItemEntry{turnID, std::move(item)});
  page.nextCursor = std::move(legacy.nextCursor);
  page.backwardsCursor = std::move(legacy.backwardsCursor);
  return page;
}

}  // namespace

Task<ThreadTurnItemsListResponse> listThreadTurnItems(std::shared_ptr<OneShotPerformer> performer, std::string threadID,
                                                      std::string turnID, ListThreadTurnItemsParams params) {
  auto capabilities = AppServerInitializeCapabilities::forManagement();
  capabilities.experimentalAPI = true;
  const auto experimental = performer->withCapabilities(std::move(capabilities));
  auto asking = pageIfKnown(detail::perform(experimental, calls::listThreadTurnItems(threadID, turnID, params)));
  auto page = co_await std::move(asking);
  if (page) co_return *std::move(page);
  auto askingAgain = detail::perform(experimental, calls::listLegacyThreadTurnItems(threadID, turnID, params));
  auto legacy = co_await std::move(askingAgain);
  co_return wrapped(std::move(legacy), turnID);
}

}  // namespace ormel::detail
