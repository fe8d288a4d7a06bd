#include "OrmelSDK/Records/ModelRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::ReasoningEffortOption> {
  static constexpr Field fields[] = {
      required<&ReasoningEffortOption::reasoningEffort>("reasoningEffort"),
      required<&ReasoningEffortOption::description>("description"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ModelAvailabilityNux> {
  static constexpr Field fields[] = {
      required<&ModelAvailabilityNux::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ModelServiceTier> {
  static constexpr Field fields[] = {
      required<&ModelServiceTier::id>("id"),
      required<&ModelServiceTier::name>("name"),
      required<&ModelServiceTier::description>("description"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ModelUpgradeInfo> {
  static constexpr Field fields[] = {
      required<&ModelUpgradeInfo::model>("model"),
      optional<&ModelUpgradeInfo::upgradeCopy>("upgradeCopy"),
      optional<&ModelUpgradeInfo::modelLink>("modelLink"),
      optional<&ModelUpgradeInfo::migrationMarkdown>("migrationMarkdown"),
      optional<&ModelUpgradeInfo::retirementAt>("retirementAt"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::OrmelModelDescriptor> {
  static constexpr Field fields[] = {
      required<&OrmelModelDescriptor::id>("id"),
      required<&OrmelModelDescriptor::model>("model"),
      optional<&OrmelModelDescriptor::upgrade>("upgrade"),
      optional<&OrmelModelDescriptor::upgradeInfo>("upgradeInfo"),
      optional<&OrmelModelDescriptor::availabilityNux>("availabilityNux"),
      required<&OrmelModelDescriptor::displayName>("displayName"),
      required<&OrmelModelDescriptor::description>("description"),
      optional<&OrmelModelDescriptor::modelSpecialty>("modelSpecialty"),
      required<&OrmelModelDescriptor::hidden>("hidden"),
      required<&OrmelModelDescriptor::supportedReasoningEfforts>("supportedReasoningEfforts"),
      required<&OrmelModelDescriptor::defaultReasoningEffort>("defaultReasoningEffort"),
      required<&OrmelModelDescriptor::inputModalities>("inputModalities"),
      required<&OrmelModelDescriptor::supportsPersonality>("supportsPersonality"),
      optional<&OrmelModelDescriptor::multiAgentVersion>("multiAgentVersion"),
      defaulted<&OrmelModelDescriptor::additionalSpeedTiers>("additionalSpeedTiers"),
      defaulted<&OrmelModelDescriptor::serviceTiers>("serviceTiers"),
      optional<&OrmelModelDescriptor::defaultServiceTier>("defaultServiceTier"),
      required<&OrmelModelDescriptor::isDefault>("isDefault"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ModelListResponse> {
  static constexpr Field fields[] = {
      required<&ModelListResponse::data>("data"),
      optional<&ModelListResponse::nextCursor>("nextCursor"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ModelProviderCapabilitiesReadResponse> {
  static constexpr Field fields[] = {
      required<&ModelProviderCapabilitiesReadResponse::namespaceTools>("namespaceTools"),
      required<&ModelProviderCapabilitiesReadResponse::imageGeneration>("imageGeneration"),
      required<&ModelProviderCapabilitiesReadResponse::webSearch>("webSearch"),
  };
};

ORMEL_DEFINE_VOCABULARY(ModelInputModality)
ORMEL_DEFINE_VOCABULARY(ModelMultiAgentVersion)
ORMEL_DEFINE_RECORD(ReasoningEffortOption)
ORMEL_DEFINE_RECORD(ModelAvailabilityNux)
ORMEL_DEFINE_RECORD(ModelServiceTier)
ORMEL_DEFINE_RECORD(ModelUpgradeInfo)
ORMEL_DEFINE_RECORD(OrmelModelDescriptor)
ORMEL_DEFINE_RECORD(ModelListResponse)
ORMEL_DEFINE_RECORD(ModelProviderCapabilitiesReadResponse)
