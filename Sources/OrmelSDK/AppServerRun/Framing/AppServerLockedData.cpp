#include "OrmelSDK/AppServerRun/Framing/AppServerLockedData.h"

#include "OrmelSDK/Text/UTF8.h"

namespace ormel::detail {

void AppServerLockedData::append(std::string_view bytes) {
  const std::lock_guard guard(lock_);
  data_ += bytes;
}

std::string AppServerLockedData::string() const {
  std::string snapshot;
  {
    const std::lock_guard guard(lock_);
    snapshot = data_;
  }
  return isValidUTF8(snapshot) ? snapshot : repairedUTF8(snapshot);
}

}  // namespace ormel::detail
