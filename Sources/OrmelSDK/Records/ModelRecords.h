#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Input/ThreadChoices.h"

// Every type here has a JSON form.
namespace ormel {

/// A kind of input that a model takes.
struct ModelInputModality : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const ModelInputModality& text;
  static const ModelInputModality& image;
  static const ModelInputModality& audio;
};
std::ostream& operator<<(std::ostream& stream, const ModelInputModality& value);

inline const ModelInputModality& ModelInputModality::text = detail::neverDestroyed<ModelInputModality>("text");
inline const ModelInputModality& ModelInputModality::image = detail::neverDestroyed<ModelInputModality>("image");
inline const ModelInputModality& ModelInputModality::audio = detail::neverDestroyed<ModelInputModality>("audio");

/// Which way of working with several agents a model supports.
struct ModelMultiAgentVersion : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const ModelMultiAgentVersion& disabled;
};
std::ostream& operator<<(std::ostream& stream, const ModelMultiAgentVersion& value);

inline const ModelMultiAgentVersion& ModelMultiAgentVersion::disabled =
    detail::neverDestroyed<ModelMultiAgentVersion>("disabled");

/// An effort that a model can be asked for.
struct ReasoningEffortOption {
  ModelReasoningEffort reasoningEffort;
  /// A sentence for the user.
  std::string description;
  friend bool operator==(const ReasoningEffortOption&, const ReasoningEffortOption&);
  friend std::ostream& operator<<(std::ostream& stream, const ReasoningEffortOption& value);
};

/// The message for the user when a model first becomes available.
struct ModelAvailabilityNux {
  std::string message;
  friend bool operator==(const ModelAvailabilityNux&, const ModelAvailabilityNux&);
  friend std::ostream& operator<<(std::ostream& stream, const ModelAvailabilityNux& value);
};

/// A way in which a model is served.
struct ModelServiceTier {
  std::string id;
  std::string name;
  std::string description;
  friend bool operator==(const ModelServiceTier&, const ModelServiceTier&);
  friend std::ostream& operator<<(std::ostream& stream, const ModelServiceTier& value);
};

/// The model that takes another one's place.
struct ModelUpgradeInfo {
  /// The text to ask for the successor by.
  std::string model;
  /// A sentence that recommends the successor.
  std::optional<std::string> upgradeCopy;
  /// An address that tells more.
  std::optional<std::string> modelLink;
  /// Information for the user before the change, in Markdown.
  std::optional<std::string> migrationMarkdown;
  /// When the older model goes away, as the server counts time.
  std::optional<std::int64_t> retirementAt;
  friend bool operator==(const ModelUpgradeInfo&, const ModelUpgradeInfo&);
  friend std::ostream& operator<<(std::ostream& stream, const ModelUpgradeInfo& value);
};

/// A model that a thread can be given.
struct OrmelModelDescriptor {
  std::string id;
  /// The text to ask for the model by.
  std::string model;
  /// The model that takes its place, if there is one.
  std::optional<std::string> upgrade;
  std::optional<ModelUpgradeInfo> upgradeInfo;
  std::optional<ModelAvailabilityNux> availabilityNux;
  std::string displayName;
  std::string description;
  /// The purpose of the model, in the server's own word.
  std::optional<std::string> modelSpecialty;
  /// Whether the model is left out of lists for the user.
  bool hidden = false;
  std::vector<ReasoningEffortOption> supportedReasoningEfforts;
  ModelReasoningEffort defaultReasoningEffort;
  std::vector<ModelInputModality> inputModalities;
  /// Whether the model follows a `Personality`.
  bool supportsPersonality = false;
  /// Absent if the server does not tell it.
  std::optional<ModelMultiAgentVersion> multiAgentVersion;
  std::vector<std::string> additionalSpeedTiers;
  std::vector<ModelServiceTier> serviceTiers;
  std::optional<std::string> defaultServiceTier;
  /// Whether a thread has this model when it chooses none.
  bool isDefault = false;
  friend bool operator==(const OrmelModelDescriptor&, const OrmelModelDescriptor&);
  friend std::ostream& operator<<(std::ostream& stream, const OrmelModelDescriptor& value);
};

/// A page of models.
struct ModelListResponse {
  std::vector<OrmelModelDescriptor> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  friend bool operator==(const ModelListResponse&, const ModelListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ModelListResponse& value);
};

/// The capabilities of the provider of models.
struct ModelProviderCapabilitiesReadResponse {
  /// Whether tools may be grouped in namespaces.
  bool namespaceTools = false;
  bool imageGeneration = false;
  bool webSearch = false;
  friend bool operator==(const ModelProviderCapabilitiesReadResponse&, const ModelProviderCapabilitiesReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const ModelProviderCapabilitiesReadResponse& value);
};

}  // namespace ormel
