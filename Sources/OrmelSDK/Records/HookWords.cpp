#include "OrmelSDK/Records/HookWords.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::HookTrustStatus> {
  static constexpr auto rule = closed;
  static constexpr Word<HookTrustStatus> words[] = {
      {HookTrustStatus::managed, "managed"},
      {HookTrustStatus::untrusted, "untrusted"},
      {HookTrustStatus::trusted, "trusted"},
      {HookTrustStatus::modified, "modified"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::HookSource> {
  static constexpr auto rule = tolerant(HookSource::unknown);
  static constexpr Word<HookSource> words[] = {
      {HookSource::system, "system"},
      {HookSource::user, "user"},
      {HookSource::project, "project"},
      {HookSource::mdm, "mdm"},
      {HookSource::sessionFlags, "sessionFlags"},
      {HookSource::plugin, "plugin"},
      {HookSource::cloudRequirements, "cloudRequirements"},
      {HookSource::cloudManagedConfig, "cloudManagedConfig"},
      {HookSource::legacyManagedConfigFile, "legacyManagedConfigFile"},
      {HookSource::legacyManagedConfigMdm, "legacyManagedConfigMdm"},
      {HookSource::unknown, "unknown"},
  };
};

ORMEL_DEFINE_VOCABULARY(HookEventName)
ORMEL_DEFINE_VOCABULARY(HookHandlerType)
ORMEL_DEFINE_ENUMERATION(HookTrustStatus)
ORMEL_DEFINE_ENUMERATION(HookSource)
