#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <variant>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

// OrmelSDK/Records/AccountRecords.h
struct OrmelAccountControlNotification;

/// A thread was archived, perhaps by another client.
struct ThreadArchivedNotification {
  std::string threadID;
  friend bool operator==(const ThreadArchivedNotification&, const ThreadArchivedNotification&);
};

/// A thread was deleted.
struct ThreadDeletedNotification {
  std::string threadID;
  friend bool operator==(const ThreadDeletedNotification&, const ThreadDeletedNotification&);
};

/// A thread was taken out of the archive.
struct ThreadUnarchivedNotification {
  std::string threadID;
  friend bool operator==(const ThreadUnarchivedNotification&, const ThreadUnarchivedNotification&);
};

/// A thread was given a name.
struct ThreadNameUpdatedNotification {
  std::string threadID;
  std::string name;
  friend bool operator==(const ThreadNameUpdatedNotification&, const ThreadNameUpdatedNotification&);
};

/// The history of a thread was shortened.
struct ThreadCompactedNotification {
  std::string threadID;
  friend bool operator==(const ThreadCompactedNotification&, const ThreadCompactedNotification&);
};

/// Something that happened to a stored thread. Use `visit` to tell the cases apart.
struct OrmelThreadLifecycleNotification {
  std::variant<ThreadArchivedNotification, ThreadDeletedNotification, ThreadUnarchivedNotification,
               ThreadNameUpdatedNotification, ThreadCompactedNotification>
      value;
  friend bool operator==(const OrmelThreadLifecycleNotification&, const OrmelThreadLifecycleNotification&);
};

/// A notification of the server as it came, whether this library knows it or not.
///
/// *Thread safety*: a plain value.
struct OrmelControlNotification {
  std::string method;
  /// JSON null if the server sent that; absent only if it sent none.
  std::optional<JSONValue> params;

  /// The thread event that it tells; nothing if it is about something else, or lacks what it should say.
  std::optional<OrmelThreadLifecycleNotification> threadLifecycleNotification() const;

  /// The account event that it tells; nothing if it is about something else, or cannot be read. A program that asks
  /// includes OrmelSDK/Records/AccountRecords.h besides.
  std::optional<OrmelAccountControlNotification> accountNotification() const;

  friend bool operator==(const OrmelControlNotification&, const OrmelControlNotification&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelControlNotification& value);
};

}  // namespace ormel
