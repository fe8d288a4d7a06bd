#pragma once

#include <iosfwd>

#include "OrmelSDK/Coding/RecordCoding.h"

// Replies without fields. Each reads any JSON object, and is written as an empty one.
namespace ormel {

/// A reply that only says that the call succeeded.
struct EmptyRPCResponse {
  friend bool operator==(const EmptyRPCResponse&, const EmptyRPCResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const EmptyRPCResponse& value);
};

/// The acknowledgement of a written configuration.
struct ConfigWriteAck {
  friend bool operator==(const ConfigWriteAck&, const ConfigWriteAck&);
  friend std::ostream& operator<<(std::ostream& stream, const ConfigWriteAck& value);
};

/// The acknowledgement of a thread's new settings.
struct ThreadSettingsUpdateResponse {
  friend bool operator==(const ThreadSettingsUpdateResponse&, const ThreadSettingsUpdateResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadSettingsUpdateResponse& value);
};

/// The acknowledgement of an added environment.
struct EnvironmentAddResponse {
  friend bool operator==(const EnvironmentAddResponse&, const EnvironmentAddResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const EnvironmentAddResponse& value);
};

}  // namespace ormel
