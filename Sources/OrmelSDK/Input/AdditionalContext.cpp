#include "OrmelSDK/Input/AdditionalContext.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::AdditionalContextKind> {
  static constexpr auto rule = closed;
  static constexpr Word<AdditionalContextKind> words[] = {
      {AdditionalContextKind::untrusted, "untrusted"},
      {AdditionalContextKind::application, "application"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AdditionalContextEntry> {
  static constexpr Field fields[] = {
      required<&AdditionalContextEntry::value>("value"),
      required<&AdditionalContextEntry::kind>("kind"),
  };
};

ORMEL_DEFINE_ENUMERATION(AdditionalContextKind)
ORMEL_DEFINE_RECORD(AdditionalContextEntry)
