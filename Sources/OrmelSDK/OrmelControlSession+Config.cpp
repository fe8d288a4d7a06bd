#include "OrmelSDK/Management/ConfigCalls.h"
#include "OrmelSDK/Management/ControlSession.h"
#include "OrmelSDK/Management/PageWalk.h"
#include "OrmelSDK/OrmelControlSession.h"

namespace ormel {

namespace calls = detail::calls;

Task<ConfigRequirementsReadResponse> OrmelControlSession::readConfigRequirements() const {
  return detail::perform(session_, calls::readConfigRequirements());
}

Task<ConfigBatchWriteResponse> OrmelControlSession::setHookEnabled(const std::string& key, bool enabled) const {
  return detail::perform(session_, calls::setHookEnabled(key, enabled));
}

Task<std::vector<OrmelModelDescriptor>> OrmelControlSession::listAllModels(const ListAllModelsParams& params) const {
  return detail::allPages(session_, calls::listModels, calls::firstPage(params));
}

Task<std::vector<PermissionProfileSummary>> OrmelControlSession::listAllPermissionProfiles(
    const ListAllPermissionProfilesParams& params) const {
  return detail::allPages(session_, calls::listPermissionProfiles, calls::firstPage(params));
}

Task<SkillsListResponse> OrmelControlSession::listSkills(const ListSkillsParams& params) const {
  return detail::perform(session_, calls::listSkills(params));
}

Task<HooksListResponse> OrmelControlSession::listHooks(const std::vector<std::string>& cwds) const {
  return detail::perform(session_, calls::listHooks(cwds));
}

}  // namespace ormel
