#include "OrmelSDK/Management/OrmelControlNotification.h"

#include <ostream>
#include <string_view>
#include <utility>

#include "OrmelSDK/Records/AccountRecords.h"

namespace ormel {

namespace {

std::optional<std::string> textIn(const JSONValue* object, std::string_view key) {
  const JSONValue* value = object ? object->find(key) : nullptr;
  const auto text = value ? value->stringValue() : std::nullopt;
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

template <typename Case>
std::optional<OrmelThreadLifecycleNotification> of(std::optional<std::string> threadID) {
  if (!threadID) return std::nullopt;
  return OrmelThreadLifecycleNotification{Case{*std::move(threadID)}};
}

}  // namespace

std::optional<OrmelThreadLifecycleNotification> OrmelControlNotification::threadLifecycleNotification() const {
  const JSONValue* members = params ? &*params : nullptr;
  auto threadID = textIn(members, "threadId");
  if (method == "thread/archived") return of<ThreadArchivedNotification>(std::move(threadID));
  if (method == "thread/deleted") return of<ThreadDeletedNotification>(std::move(threadID));
  if (method == "thread/compacted") return of<ThreadCompactedNotification>(std::move(threadID));
  if (method == "thread/unarchived") {
    // Unlike its siblings this one carries the whole thread.
    return of<ThreadUnarchivedNotification>(textIn(members ? members->find("thread") : nullptr, "id"));
  }
  if (method != "thread/name/updated") return std::nullopt;
  auto name = textIn(members, "name");
  if (!threadID || !name) return std::nullopt;
  return OrmelThreadLifecycleNotification{ThreadNameUpdatedNotification{*std::move(threadID), *std::move(name)}};
}

std::optional<OrmelAccountControlNotification> OrmelControlNotification::accountNotification() const {
  return OrmelAccountControlNotification::from(method, params);
}

std::ostream& operator<<(std::ostream& stream, const OrmelControlNotification& value) {
  stream << value.method;
  if (value.params) stream << ' ' << *value.params;
  return stream;
}

bool operator==(const ThreadArchivedNotification&, const ThreadArchivedNotification&) = default;
bool operator==(const ThreadDeletedNotification&, const ThreadDeletedNotification&) = default;
bool operator==(const ThreadUnarchivedNotification&, const ThreadUnarchivedNotification&) = default;
bool operator==(const ThreadNameUpdatedNotification&, const ThreadNameUpdatedNotification&) = default;
bool operator==(const ThreadCompactedNotification&, const ThreadCompactedNotification&) = default;
bool operator==(const OrmelThreadLifecycleNotification&, const OrmelThreadLifecycleNotification&) = default;
bool operator==(const OrmelControlNotification&, const OrmelControlNotification&) = default;

}  // namespace ormel
