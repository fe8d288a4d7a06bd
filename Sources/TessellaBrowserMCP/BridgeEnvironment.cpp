#include "TessellaBrowserMCP/BridgeEnvironment.h"

#include <cstdlib>

#include "OrmelSDK/Text/UTF8.h"
#include "TessellaBrowserMCP/BridgeFailure.h"

namespace ormel {

namespace {

std::string requiredVariable(const char* name) {
  const char* value = std::getenv(name);
  if (!value || *value == '\0') throw BridgeFailure::missingEnvironment(name);
  return repairedUTF8(value);
}

}  // namespace

BridgeEnvironment BridgeEnvironment::read() {
  BridgeEnvironment environment;
  environment.socketPath = requiredVariable("KESTRION_BROWSER_SOCKET");
  environment.workspacePath = requiredVariable("KESTRION_WORKSPACE_PATH");
  environment.token = requiredVariable("KESTRION_BROWSER_TOKEN");
  return environment;
}

}  // namespace ormel
