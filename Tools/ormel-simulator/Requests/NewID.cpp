#include "ormel-simulator/Requests/NewID.h"

#include <algorithm>
#include <cctype>

#include "OrmelSDK/Base/UUID.h"

namespace ormel::simulator {

std::string newID() {
  std::string text = UUID::random().text();
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return text;
}

}  // namespace ormel::simulator
