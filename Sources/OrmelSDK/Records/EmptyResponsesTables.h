#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Records/EmptyResponses.h"

template <>
struct ormel::coding::RecordTable<ormel::EmptyRPCResponse> {
  static constexpr auto fields = std::tuple<>();
};
ORMEL_DECLARE_CODEC(EmptyRPCResponse)

template <>
struct ormel::coding::RecordTable<ormel::ConfigWriteAck> {
  static constexpr auto fields = std::tuple<>();
};
ORMEL_DECLARE_CODEC(ConfigWriteAck)

template <>
struct ormel::coding::RecordTable<ormel::ThreadSettingsUpdateResponse> {
  static constexpr auto fields = std::tuple<>();
};
ORMEL_DECLARE_CODEC(ThreadSettingsUpdateResponse)
