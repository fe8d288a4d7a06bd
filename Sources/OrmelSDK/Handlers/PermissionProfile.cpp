#include "OrmelSDK/Handlers/PermissionProfile.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/KeptValue.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::RequestPermissionProfile> {
  static constexpr Field fields[] = {
      optional<&RequestPermissionProfile::network>("network"),
      optional<&RequestPermissionProfile::fileSystem>("fileSystem", "file_system"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GrantedPermissionProfile> {
  static constexpr Field fields[] = {
      optional<&GrantedPermissionProfile::network>("network"),
      optional<&GrantedPermissionProfile::fileSystem>("fileSystem", "file_system"),
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PermissionGrantScope> {
  static constexpr auto rule = closed;
  static constexpr Word<PermissionGrantScope> words[] = {
      {PermissionGrantScope::turn, "turn"},
      {PermissionGrantScope::session, "session"},
  };
};

namespace ormel {

RequestPermissionProfile decodePermissionProfile(const JSONObject& object) {
  RequestPermissionProfile profile;
  if (const auto* network = object.find("network")) profile.network = coding::kept(*network);
  const auto* fileSystem = object.find("fileSystem");
  if (!fileSystem) fileSystem = object.find("file_system");
  if (fileSystem) profile.fileSystem = coding::kept(*fileSystem);
  return profile;
}

JSONValue permissionProfileJSONObject(const GrantedPermissionProfile& profile) { return encode(profile); }
JSONValue permissionProfileJSONObject(const RequestPermissionProfile& profile) { return encode(profile); }

}  // namespace ormel

ORMEL_DEFINE_RECORD(RequestPermissionProfile)
ORMEL_DEFINE_RECORD(GrantedPermissionProfile)
ORMEL_DEFINE_ENUMERATION(PermissionGrantScope)
