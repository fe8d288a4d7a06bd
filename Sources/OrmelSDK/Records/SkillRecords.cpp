#include "OrmelSDK/Records/SkillRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::SkillInterface> {
  static constexpr Field fields[] = {
      optional<&SkillInterface::displayName>("displayName"),
      optional<&SkillInterface::shortDescription>("shortDescription"),
      optional<&SkillInterface::iconSmall>("iconSmall"),
      optional<&SkillInterface::iconLarge>("iconLarge"),
      optional<&SkillInterface::brandColor>("brandColor"),
      optional<&SkillInterface::defaultPrompt>("defaultPrompt"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SkillSummary> {
  static constexpr Field fields[] = {
      required<&SkillSummary::name>("name"),
      required<&SkillSummary::description>("description"),
      optional<&SkillSummary::shortDescription>("shortDescription"),
      optional<&SkillSummary::interface>("interface"),
      required<&SkillSummary::path>("path"),
      defaulted<&SkillSummary::enabled>("enabled"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SkillErrorInfo> {
  static constexpr Field fields[] = {
      required<&SkillErrorInfo::path>("path"),
      required<&SkillErrorInfo::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SkillsListEntry> {
  static constexpr Field fields[] = {
      required<&SkillsListEntry::cwd>("cwd"),
      required<&SkillsListEntry::skills>("skills"),
      required<&SkillsListEntry::errors>("errors"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SkillsListResponse> {
  static constexpr Field fields[] = {
      required<&SkillsListResponse::data>("data"),
  };
};

ORMEL_DEFINE_RECORD(SkillInterface)
ORMEL_DEFINE_RECORD(SkillSummary)
ORMEL_DEFINE_RECORD(SkillErrorInfo)
ORMEL_DEFINE_RECORD(SkillsListEntry)
ORMEL_DEFINE_RECORD(SkillsListResponse)
