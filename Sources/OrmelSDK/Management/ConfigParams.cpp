#include "OrmelSDK/Management/ConfigParams.h"

#include "OrmelSDK/Coding/ParamsTable.h"

template <>
struct ormel::coding::ParamsTable<ormel::ReadConfigParams> {
  using P = ReadConfigParams;
  static constexpr Field fields[] = {
      always<&P::includeLayers>("includeLayers"),
      ifGiven<&P::cwd>("cwd"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::WriteConfigValueParams> {
  static constexpr Field fields[] = {
      ifGiven<&WriteConfigValueParams::expectedVersion>("expectedVersion"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::BatchWriteConfigParams> {
  using P = BatchWriteConfigParams;
  static constexpr Field fields[] = {
      ifGiven<&P::filePath>("filePath"),
      ifGiven<&P::expectedVersion>("expectedVersion"),
      ifGiven<&P::reloadUserConfig>("reloadUserConfig"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListModelsParams> {
  using P = ListModelsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
      ifGiven<&P::includeHidden>("includeHidden"),
  };
  static constexpr bool absentWhenEmpty = true;
};

template <>
struct ormel::coding::ParamsTable<ormel::ListPermissionProfilesParams> {
  using P = ListPermissionProfilesParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
      ifGiven<&P::cwd>("cwd"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListExperimentalFeaturesParams> {
  using P = ListExperimentalFeaturesParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::limit>("limit"),
      ifGiven<&P::threadID>("threadId"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListSkillsParams> {
  using P = ListSkillsParams;
  static constexpr Field fields[] = {
      ifGiven<&P::cwds>("cwds"),
      ifGiven<&P::forceReload>("forceReload"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::WriteSkillConfigParams> {
  using P = WriteSkillConfigParams;
  static constexpr Field fields[] = {
      ifGiven<&P::path>("path"),
      ifGiven<&P::name>("name"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ListHooksParams> {
  static constexpr Field fields[] = {
      ifGiven<&ListHooksParams::cwds>("cwds"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::DetectExternalAgentConfigParams> {
  using P = DetectExternalAgentConfigParams;
  static constexpr Field fields[] = {
      ifGiven<&P::includeHome>("includeHome"),
      ifGiven<&P::cwds>("cwds"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ImportExternalAgentConfigParams> {
  static constexpr Field fields[] = {
      ifGiven<&ImportExternalAgentConfigParams::source>("source"),
  };
};

ORMEL_DEFINE_PARAMS(ReadConfigParams)
ORMEL_DEFINE_PARAMS(WriteConfigValueParams)
ORMEL_DEFINE_PARAMS(BatchWriteConfigParams)
ORMEL_DEFINE_PARAMS(ListModelsParams)
ORMEL_DEFINE_PARAMS(ListPermissionProfilesParams)
ORMEL_DEFINE_PARAMS(ListExperimentalFeaturesParams)
ORMEL_DEFINE_PARAMS(ListSkillsParams)
ORMEL_DEFINE_PARAMS(WriteSkillConfigParams)
ORMEL_DEFINE_PARAMS(ListHooksParams)
ORMEL_DEFINE_PARAMS(DetectExternalAgentConfigParams)
ORMEL_DEFINE_PARAMS(ImportExternalAgentConfigParams)
