#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Input/AdditionalContext.h"

template <>
struct ormel::coding::EnumerationTable<ormel::AdditionalContextKind> {
  static constexpr auto words = closed(std::array{Word{AdditionalContextKind::untrusted, "untrusted"},
                                                  Word{AdditionalContextKind::application, "application"}});
};
ORMEL_DECLARE_ENUMERATION(AdditionalContextKind)

template <>
struct ormel::coding::RecordTable<ormel::AdditionalContextEntry> {
  static constexpr auto fields =
      std::tuple(required<&AdditionalContextEntry::value>("value"), required<&AdditionalContextEntry::kind>("kind"));
};
ORMEL_DECLARE_CODEC(AdditionalContextEntry)
