#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The server has verified the model of a turn.
struct ModelVerificationEvent {
  std::string threadID;
  std::string turnID;
  std::vector<std::string> verifications;
  friend bool operator==(const ModelVerificationEvent&, const ModelVerificationEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ModelVerificationEvent& value);
};

/// A turn continues with another model.
struct ModelReroutedEvent {
  std::string threadID;
  std::string turnID;
  std::string fromModel;
  std::string toModel;
  std::string reason;
  friend bool operator==(const ModelReroutedEvent&, const ModelReroutedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ModelReroutedEvent& value);
};

/// The model's answer is being held back for a safety check.
struct ModelSafetyBufferingUpdatedEvent {
  std::string threadID;
  std::string turnID;
  std::string model;
  std::vector<std::string> useCases;
  std::vector<std::string> reasons;
  bool showBufferingUI = false;
  /// A model that would answer without the delay.
  std::optional<std::string> fasterModel;
  friend bool operator==(const ModelSafetyBufferingUpdatedEvent&, const ModelSafetyBufferingUpdatedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ModelSafetyBufferingUpdatedEvent& value);
};

/// The verdict of moderation on a turn, as the server sent it.
struct TurnModerationMetadataEvent {
  std::string threadID;
  std::string turnID;
  JSONValue metadata;
  friend bool operator==(const TurnModerationMetadataEvent&, const TurnModerationMetadataEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const TurnModerationMetadataEvent& value);
};

}  // namespace ormel
