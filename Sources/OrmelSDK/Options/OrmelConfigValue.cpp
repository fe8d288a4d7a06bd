#include "OrmelSDK/Options/OrmelConfigValue.h"

namespace ormel {

bool operator==(const OrmelConfigValue& left, const OrmelConfigValue& right) {
  const auto* const leftMembers = left.objectValue();
  const auto* const rightMembers = right.objectValue();
  if (leftMembers && rightMembers) return *leftMembers == *rightMembers;
  return left.payload_ == right.payload_;
}

}  // namespace ormel
