#include "OrmelSDK/AppServerRun/Launch/PathList.h"

#include <algorithm>

namespace ormel::detail {

std::vector<std::string_view> pathListParts(std::string_view list) {
  std::vector<std::string_view> parts;
  while (!list.empty()) {
    const std::string_view part = list.substr(0, list.find(':'));
    if (!part.empty()) parts.push_back(part);
    list.remove_prefix(std::min(list.size(), part.size() + 1));
  }
  return parts;
}

}  // namespace ormel::detail
