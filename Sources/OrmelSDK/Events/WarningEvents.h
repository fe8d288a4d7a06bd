#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// Something that the user should know; a warning without a thread concerns the whole server.
struct ThreadWarningEvent {
  std::optional<std::string> threadID;
  std::string message;
  friend bool operator==(const ThreadWarningEvent&, const ThreadWarningEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadWarningEvent& value);
};

/// The server renews its authentication at a model provider.
struct AuthRecoveryEvent {
  std::string threadID;
  std::string turnID;
  std::string provider;
  std::string message;
  friend bool operator==(const AuthRecoveryEvent&, const AuthRecoveryEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const AuthRecoveryEvent& value);
};

/// The renewal has begun.
struct AuthRecoveryStartedEvent : AuthRecoveryEvent {};

/// The renewal has ended.
struct AuthRecoveryCompletedEvent : AuthRecoveryEvent {};

/// Something that the application or the user relies on will go away.
struct DeprecationNoticeEvent {
  std::string summary;
  std::optional<std::string> details;
  friend bool operator==(const DeprecationNoticeEvent&, const DeprecationNoticeEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const DeprecationNoticeEvent& value);
};

/// A place in a text file, counted as the server counts.
struct TextPosition {
  std::int64_t line = 0;
  std::int64_t column = 0;
  friend bool operator==(const TextPosition&, const TextPosition&);
  friend std::ostream& operator<<(std::ostream& stream, const TextPosition& value);
};

/// A part of a text file.
struct TextRange {
  TextPosition start;
  TextPosition end;
  friend bool operator==(const TextRange&, const TextRange&);
  friend std::ostream& operator<<(std::ostream& stream, const TextRange& value);
};

/// The server's configuration is doubtful, at `range` of the file `path` if these are known.
struct ConfigWarningEvent {
  std::string summary;
  std::optional<std::string> details;
  std::optional<std::string> path;
  std::optional<TextRange> range;
  friend bool operator==(const ConfigWarningEvent&, const ConfigWarningEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ConfigWarningEvent& value);
};

}  // namespace ormel
