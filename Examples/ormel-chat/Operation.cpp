#include "Operation.h"

#include <exception>
#include <utility>

namespace ormel::chat {

namespace {

Task<void> forwardEvents(Task<StreamedTurn> operation, std::shared_ptr<Inbox> inbox) {
  std::exception_ptr failure;
  try {
    StreamedTurn turn = co_await std::move(operation);
    inbox->post(OperationAccepted());
    while (auto event = co_await turn.events.next()) inbox->post(std::move(*event));
  } catch (...) {
    failure = std::current_exception();
  }
  inbox->post(OperationEnded{failure});
}

Task<void> reportFailure(Task<void> call, std::shared_ptr<Inbox> inbox) {
  try {
    co_await std::move(call);
  } catch (const std::exception& error) {
    inbox->post(Notice{error.what(), Style::red});
  }
}

Task<void> reportSteer(Task<void> call, std::string text, std::shared_ptr<Inbox> inbox) {
  std::exception_ptr failure;
  try {
    co_await std::move(call);
  } catch (...) {
    failure = std::current_exception();
  }
  inbox->post(SteerEnded{std::move(text), failure});
}

Task<void> reportEnd(Task<void> call, std::shared_ptr<Inbox> inbox) {
  std::exception_ptr failure;
  try {
    co_await std::move(call);
  } catch (...) {
    failure = std::current_exception();
  }
  inbox->post(OperationEnded{failure});
}

}  // namespace

void follow(Task<StreamedTurn> operation, std::shared_ptr<Inbox> inbox) {
  forwardEvents(std::move(operation), std::move(inbox)).detach();
}

void follow(Task<void> call, std::shared_ptr<Inbox> inbox) {
  reportFailure(std::move(call), std::move(inbox)).detach();
}

void followSteer(Task<void> call, std::string text, std::shared_ptr<Inbox> inbox) {
  reportSteer(std::move(call), std::move(text), std::move(inbox)).detach();
}

void followToEnd(Task<void> call, std::shared_ptr<Inbox> inbox, std::stop_token stop) {
  reportEnd(std::move(call), std::move(inbox)).withStopToken(std::move(stop)).detach();
}

}  // namespace ormel::chat
