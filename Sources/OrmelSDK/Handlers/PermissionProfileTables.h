#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Handlers/PermissionProfile.h"

template <>
struct ormel::coding::RecordTable<ormel::RequestPermissionProfile> {
  static constexpr auto fields =
      std::tuple(optional<&RequestPermissionProfile::network>("network"),
                 optional<&RequestPermissionProfile::fileSystem>("fileSystem", "file_system"));
};
ORMEL_DECLARE_CODEC(RequestPermissionProfile)

template <>
struct ormel::coding::RecordTable<ormel::GrantedPermissionProfile> {
  static constexpr auto fields =
      std::tuple(optional<&GrantedPermissionProfile::network>("network"),
                 optional<&GrantedPermissionProfile::fileSystem>("fileSystem", "file_system"));
};
ORMEL_DECLARE_CODEC(GrantedPermissionProfile)

template <>
struct ormel::coding::EnumerationTable<ormel::PermissionGrantScope> {
  static constexpr auto words =
      closed(std::array{Word{PermissionGrantScope::turn, "turn"}, Word{PermissionGrantScope::session, "session"}});
};
ORMEL_DECLARE_ENUMERATION(PermissionGrantScope)
