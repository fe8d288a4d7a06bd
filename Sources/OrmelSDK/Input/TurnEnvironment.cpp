#include "OrmelSDK/Input/TurnEnvironment.h"

#include <tuple>

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::TurnEnvironment> {
  static constexpr auto fields = std::tuple(required<&TurnEnvironment::environmentID>("environmentID"),
                                            required<&TurnEnvironment::workingDirectory>("workingDirectory"));
};
ORMEL_DEFINE_PRINTED_RECORD(TurnEnvironment)
