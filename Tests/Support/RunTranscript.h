#pragma once

#include <exception>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "Support/ConcurrencySchedulers.h"

namespace ormel::testing {

/// A failure in a few words: its kind and its text.
inline std::string inWords(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const ThreadRunError& error) {
    const bool ofStream = error.kind() == ThreadRunError::Kind::streamError;
    return std::string(ofStream ? "stream error: " : "turn failed: ") + error.what();
  } catch (const OrmelProcessError& error) {
    if (error.kind() == OrmelProcessError::Kind::aborted) return "aborted";
    return std::string("process error: ") + error.what();
  } catch (const CancelledError&) {
    return "cancelled";
  } catch (const std::exception& error) {
    return std::string("other error: ") + error.what();
  }
}

/// The failure of the action, in words; "no failure" if it does not fail.
template <typename Action>
std::string failureOf(Action&& action) {
  try {
    std::forward<Action>(action)();
  } catch (...) {
    return inWords(std::current_exception());
  }
  return "no failure";
}

/// An event in a few words: its type, and what it is mainly about.
inline std::string inWords(const ThreadEvent& event) {
  const JSONValue form = encode(event);
  std::string words(form.find("type")->stringValue().value_or("?"));
  std::string subject;
  if (const auto* thread = std::get_if<ThreadStartedEvent>(&event.value)) subject = thread->threadID;
  if (const auto* failed = std::get_if<TurnFailedEvent>(&event.value)) subject = failed->error.message;
  if (const auto* error = std::get_if<ThreadErrorEvent>(&event.value)) subject = error->message;
  if (const auto* warning = std::get_if<ThreadWarningEvent>(&event.value)) subject = warning->message;
  if (const auto* item = std::get_if<ItemStartedEvent>(&event.value)) subject = item->item.id();
  if (const auto* item = std::get_if<ItemUpdatedEvent>(&event.value)) subject = item->item.id();
  if (const auto* item = std::get_if<ItemCompletedEvent>(&event.value)) subject = item->item.id();
  return subject.empty() ? words : words + " " + subject;
}

/// Everything that a channel tells, in words; the last entry is its end: "end", or the failure.
inline Task<std::vector<std::string>> toldBy(EventChannel<ThreadEvent> events) {
  std::vector<std::string> words;
  try {
    while (const auto event = co_await events.next()) words.push_back(inWords(*event));
    words.emplace_back("end");
  } catch (...) {
    words.push_back(inWords(std::current_exception()));
  }
  co_return words;
}

/// Waits for the end of the channel.
inline std::vector<std::string> told(EventChannel<ThreadEvent>& events) {
  return Production().run(toldBy(std::move(events)));
}

/// The next event in words.
inline Task<std::string> nextToldBy(EventChannel<ThreadEvent>& events) {
  const auto event = co_await events.next();
  co_return event ? inWords(*event) : "end";
}
inline std::string nextTold(EventChannel<ThreadEvent>& events) { return Production().run(nextToldBy(events)); }

}  // namespace ormel::testing
