#include "OrmelSDK/Input/TurnEnvironment.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::TurnEnvironment> {
  static constexpr Field fields[] = {
      printed<&TurnEnvironment::environmentID>("environmentID"),
      printed<&TurnEnvironment::workingDirectory>("workingDirectory"),
  };
};
ORMEL_DEFINE_PRINTED_RECORD(TurnEnvironment)
