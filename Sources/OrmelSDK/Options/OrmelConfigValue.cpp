#include "OrmelSDK/Options/OrmelConfigValue.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace ormel {

OrmelConfigValue::OrmelConfigValue(const OrmelConfigValue&) = default;
OrmelConfigValue::OrmelConfigValue(OrmelConfigValue&&) noexcept = default;
OrmelConfigValue& OrmelConfigValue::operator=(const OrmelConfigValue&) = default;
OrmelConfigValue& OrmelConfigValue::operator=(OrmelConfigValue&&) noexcept = default;
OrmelConfigValue::~OrmelConfigValue() = default;

OrmelConfigValue::OrmelConfigValue(std::string value) : payload_(std::move(value)) {}
OrmelConfigValue::OrmelConfigValue(std::string_view value) : payload_(std::string(value)) {}
OrmelConfigValue::OrmelConfigValue(const char* value) : payload_(std::string(value)) {}
OrmelConfigValue::OrmelConfigValue(Payload payload) : payload_(std::move(payload)) {}

OrmelConfigValue OrmelConfigValue::array(Array elements) { return OrmelConfigValue(Payload(std::move(elements))); }

OrmelConfigValue OrmelConfigValue::object(Object members) {
  return OrmelConfigValue(Payload(std::make_shared<const Object>(std::move(members))));
}

bool operator==(const OrmelConfigValue& left, const OrmelConfigValue& right) {
  const auto* const leftMembers = left.objectValue();
  const auto* const rightMembers = right.objectValue();
  if (leftMembers && rightMembers) return *leftMembers == *rightMembers;
  return left.payload_ == right.payload_;
}

}  // namespace ormel
