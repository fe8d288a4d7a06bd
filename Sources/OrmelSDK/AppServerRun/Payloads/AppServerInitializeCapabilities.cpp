#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"

#include <ostream>

#include "OrmelSDK/AppServerRun/Payloads/AppServerPayloadMembers.h"

namespace ormel::detail {

AppServerInitializeCapabilities AppServerInitializeCapabilities::forManagement() {
  AppServerInitializeCapabilities capabilities;
  capabilities.optOutNotificationMethods = {"thread/started",
                                            "turn/started",
                                            "item/started",
                                            "item/updated",
                                            "item/completed",
                                            "item/agentMessage/delta",
                                            "item/commandExecution/outputDelta",
                                            "thread/tokenUsage/updated",
                                            "turn/completed"};
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
  setIfPresent(object, "optOutNotificationMethods", optOutNotificationMethods);
  return object.build();
}

std::ostream& operator<<(std::ostream& stream, const AppServerInitializeCapabilities& value) {
  return stream << value.jsonObject();
}

JSONValue appServerInitializeParams(const AppServerInitializeCapabilities& capabilities) {
  const JSONValue client = JSONValue::object({{"name", "kestrion"}, {"title", "Kestrion"}, {"version", "0.1.0"}});
  return JSONValue::object({{"clientInfo", client}, {"capabilities", capabilities.jsonObject()}});
}

}  // namespace ormel::detail
