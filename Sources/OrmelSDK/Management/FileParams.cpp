#include "OrmelSDK/Management/FileParams.h"

#include "OrmelSDK/Coding/ParamsTable.h"

template <>
struct ormel::coding::ParamsTable<ormel::CreateDirectoryParams> {
  static constexpr Field fields[] = {
      ifGiven<&CreateDirectoryParams::recursive>("recursive"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::RemovePathParams> {
  using P = RemovePathParams;
  static constexpr Field fields[] = {
      ifGiven<&P::recursive>("recursive"),
      ifGiven<&P::force>("force"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::CopyPathParams> {
  static constexpr Field fields[] = {
      ifGiven<&CopyPathParams::recursive>("recursive"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::FuzzyFileSearchParams> {
  static constexpr Field fields[] = {
      nullWhenEmpty<&FuzzyFileSearchParams::cancellationToken>("cancellationToken"),
  };
};

ORMEL_DEFINE_PARAMS(CreateDirectoryParams)
ORMEL_DEFINE_PARAMS(RemovePathParams)
ORMEL_DEFINE_PARAMS(CopyPathParams)
ORMEL_DEFINE_PARAMS(FuzzyFileSearchParams)
