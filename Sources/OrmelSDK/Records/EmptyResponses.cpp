#include "OrmelSDK/Records/EmptyResponses.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::EmptyRPCResponse> : NoFields {};

template <>
struct ormel::coding::RecordTable<ormel::ConfigWriteAck> : NoFields {};

template <>
struct ormel::coding::RecordTable<ormel::ThreadSettingsUpdateResponse> : NoFields {};

template <>
struct ormel::coding::RecordTable<ormel::EnvironmentAddResponse> : NoFields {};

ORMEL_DEFINE_RECORD(EmptyRPCResponse)
ORMEL_DEFINE_RECORD(ConfigWriteAck)
ORMEL_DEFINE_RECORD(ThreadSettingsUpdateResponse)
ORMEL_DEFINE_RECORD(EnvironmentAddResponse)
