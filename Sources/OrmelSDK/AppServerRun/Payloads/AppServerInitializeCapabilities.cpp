#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"

#include <ostream>

#include "OrmelSDK/AppServerRun/Payloads/AppServerPayloadMembers.h"

namespace ormel {

AppServerInitializeCapabilities AppServerInitializeCapabilities::forManagement() {
  AppServerInitializeCapabilities capabilities;
  capabilities.optOutNotificationMethods.emplace(controlOptOutNotificationMethods.begin(),
                                                 controlOptOutNotificationMethods.end());
  return capabilities;
}

AppServerInitializeCapabilities AppServerInitializeCapabilities::forTurns(const ThreadOptions& threadOptions) {
  AppServerInitializeCapabilities capabilities;
  capabilities.experimentalAPI = true;
  capabilities.requestAttestation = threadOptions.attestationGenerateHandler.has_value();
  capabilities.mcpServerVelnorFormElicitation =
      threadOptions.supportsVelnorFormElicitation && threadOptions.mcpServerElicitationHandler.has_value();
  return capabilities;
}

JSONValue AppServerInitializeCapabilities::jsonObject() const {
  JSONObjectBuilder object;
  object.set("experimentalApi", experimentalAPI);
  object.set("requestAttestation", requestAttestation);
  if (mcpServerVelnorFormElicitation) object.set("mcpServerVelnorFormElicitation", true);
  detail::setIfPresent(object, "optOutNotificationMethods", optOutNotificationMethods);
  return object.build();
}

std::ostream& operator<<(std::ostream& stream, const AppServerInitializeCapabilities& value) {
  return stream << value.jsonObject();
}

JSONValue detail::appServerInitializeParams(const AppServerInitializeCapabilities& capabilities) {
  const JSONValue client = JSONValue::object({{"name", "kestrion"}, {"title", "Kestrion"}, {"version", "0.1.0"}});
  return JSONValue::object({{"clientInfo", client}, {"capabilities", capabilities.jsonObject()}});
}

}  // namespace ormel
