#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

// Every type here has a JSON form.
namespace ormel {

/// What the server has verified about the model of a turn.
struct ModelVerificationEvent {
  std::string threadID;
  std::string turnID;
  std::vector<std::string> verifications;
  friend bool operator==(const ModelVerificationEvent&, const ModelVerificationEvent&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const ModelVerificationEvent& value);
};

/// A turn goes on with another model.
struct ModelReroutedEvent {
  std::string threadID;
  std::string turnID;
  std::string fromModel;
  std::string toModel;
  std::string reason;
  friend bool operator==(const ModelReroutedEvent&, const ModelReroutedEvent&) = default;
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
  friend bool operator==(const ModelSafetyBufferingUpdatedEvent&, const ModelSafetyBufferingUpdatedEvent&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const ModelSafetyBufferingUpdatedEvent& value);
};

/// What moderation has to say about a turn, kept whole.
struct TurnModerationMetadataEvent {
  std::string threadID;
  std::string turnID;
  JSONValue metadata;
  friend bool operator==(const TurnModerationMetadataEvent&, const TurnModerationMetadataEvent&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const TurnModerationMetadataEvent& value);
};

}  // namespace ormel
