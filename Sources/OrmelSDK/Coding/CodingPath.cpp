#include "OrmelSDK/Coding/CodingPath.h"

#include <algorithm>

namespace ormel::coding {

std::vector<std::string> CodingPath::texts() const {
  std::vector<std::string> texts;
  for (const auto* link = this; link->parent; link = link->parent) {
    texts.push_back(link->index == noIndex ? std::string(link->key) : "Index " + std::to_string(link->index));
  }
  std::reverse(texts.begin(), texts.end());
  return texts;
}

}  // namespace ormel::coding
