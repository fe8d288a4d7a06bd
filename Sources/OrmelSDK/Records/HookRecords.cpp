#include "OrmelSDK/Records/HookRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::HookErrorInfo> {
  static constexpr Field fields[] = {
      required<&HookErrorInfo::path>("path"),
      required<&HookErrorInfo::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HookMetadata> {
  static constexpr Field fields[] = {
      required<&HookMetadata::key>("key"),
      required<&HookMetadata::eventName>("eventName"),
      required<&HookMetadata::handlerType>("handlerType"),
      optional<&HookMetadata::matcher>("matcher"),
      optional<&HookMetadata::command>("command"),
      optional<&HookMetadata::server>("server"),
      optional<&HookMetadata::tool>("tool"),
      required<&HookMetadata::timeoutSeconds>("timeoutSec"),
      optional<&HookMetadata::statusMessage>("statusMessage"),
      optional<&HookMetadata::additionalContextLimit>("additionalContextLimit"),
      required<&HookMetadata::sourcePath>("sourcePath"),
      required<&HookMetadata::source>("source"),
      optional<&HookMetadata::pluginID>("pluginId"),
      required<&HookMetadata::displayOrder>("displayOrder"),
      required<&HookMetadata::enabled>("enabled"),
      required<&HookMetadata::isManaged>("isManaged"),
      defaulted<&HookMetadata::currentHash>("currentHash"),
      defaulted<&HookMetadata::trustStatus>("trustStatus"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HooksListEntry> {
  static constexpr Field fields[] = {
      required<&HooksListEntry::cwd>("cwd"),
      defaulted<&HooksListEntry::hooks>("hooks"),
      defaulted<&HooksListEntry::warnings>("warnings"),
      defaulted<&HooksListEntry::errors>("errors"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HooksListResponse> {
  static constexpr Field fields[] = {
      required<&HooksListResponse::data>("data"),
  };
};

ORMEL_DEFINE_RECORD(HookErrorInfo)
ORMEL_DEFINE_RECORD(HookMetadata)
ORMEL_DEFINE_RECORD(HooksListEntry)
ORMEL_DEFINE_RECORD(HooksListResponse)
