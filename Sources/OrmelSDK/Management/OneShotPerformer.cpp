#include "OrmelSDK/Management/OneShotPerformer.h"

#include <exception>
#include <utility>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Management/ClientCall.h"

namespace ormel::detail {

namespace {

[[noreturn]] void failNaming(const std::string& method, const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const CancelledError&) {
    throw ThreadRunError::streamError("App-server RPC " + method + " was cancelled");
  } catch (const ThreadRunError& error) {
    if (error.kind() != ThreadRunError::Kind::streamError) throw;
    const std::string message = "App-server RPC " + method + " failed: " + error.description();
    throw error.isRetryable() ? ThreadRunError::passing(message, error.cause())
                              : ThreadRunError::streamError(message, error.cause());
  }
}

Task<void> notifyOn(std::shared_ptr<AppServerRPCClient> client, std::string method, std::optional<JSONValue> params) {
  co_await client->startProcess();
  co_await client->initializeIfNeeded();
  auto sending = client->sendNotification(std::move(method), std::move(params));
  co_await std::move(sending);
}

/// How a task ended, for who has something to do in between.
Task<std::exception_ptr> failureOf(Task<void> task) {
  try {
    co_await std::move(task);
  } catch (...) {
    co_return std::current_exception();
  }
  co_return nullptr;
}

}  // namespace

std::shared_ptr<OneShotPerformer> OneShotPerformer::withCapabilities(
    AppServerInitializeCapabilities initializeCapabilities) const {
  auto configuration = configuration_;
  configuration.initializeCapabilities = std::move(initializeCapabilities);
  return std::make_shared<OneShotPerformer>(std::move(configuration), services_);
}

std::shared_ptr<AppServerRPCClient> OneShotPerformer::newClient() const {
  return AppServerRPCClient::create(configuration_, services_, Strand(*services_.scheduler, "one-shot call"));
}

Task<void> OneShotPerformer::perform(std::string method, std::optional<JSONValue> params, ReplyPlace reply) {
  const auto client = newClient();
  co_await client->strand().enter();
  auto outcome = failureOf(callOn(client, method, std::move(params), reply));
  const std::exception_ptr failure = co_await std::move(outcome);
  co_await client->terminate();
  if (failure) failNaming(method, failure);
}

Task<void> OneShotPerformer::performNotification(std::shared_ptr<const OneShotPerformer> self, std::string method,
                                                 std::optional<JSONValue> params) {
  const auto client = self->newClient();
  co_await client->strand().enter();
  auto outcome = failureOf(notifyOn(client, std::move(method), std::move(params)));
  const std::exception_ptr failure = co_await std::move(outcome);
  if (failure) {
    co_await client->terminate();
    std::rethrow_exception(failure);
  }
  co_await client->finishNotifications();
}

}  // namespace ormel::detail
