#include "ormel-simulator/Machine/Commands/BoundedText.h"

#include <algorithm>

namespace ormel::simulator {

std::string_view BoundedText::append(std::string_view bytes) {
  const std::string_view kept = bytes.substr(0, std::min(bytes.size(), limit - kept_.size()));
  kept_ += kept;
  dropped_ += bytes.size() - kept.size();
  return kept;
}

std::string BoundedText::text() const {
  if (!isCut()) return kept_;
  return kept_ + "\n[" + std::to_string(dropped_) + " more bytes were cut off]\n";
}

}  // namespace ormel::simulator
