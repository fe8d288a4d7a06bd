#include "OrmelSDK/Handlers/PermissionProfile.h"

#include "OrmelSDK/Coding/KeptValue.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Handlers/PermissionProfileTables.h"

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
