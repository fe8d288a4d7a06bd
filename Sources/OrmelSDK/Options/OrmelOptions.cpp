#include "OrmelSDK/Options/OrmelOptions.h"

#include <utility>

namespace ormel {

std::map<std::string, OrmelConfigValue> OrmelOptions::configEnablingRequiredSDKFeatures() const {
  auto enabled = config.value_or(OrmelConfigValue::Object());
  OrmelConfigValue::Object features;
  if (const auto found = enabled.find("features"); found != enabled.end()) {
    if (const auto* members = found->second.objectValue()) features = *members;
  }
  features.insert_or_assign("goals", true);
  enabled.insert_or_assign("features", OrmelConfigValue::object(std::move(features)));
  return enabled;
}

}  // namespace ormel
