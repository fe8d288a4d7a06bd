#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Support/Descriptor.h"

namespace ormel::testing {

/// A length in the four little-endian bytes that stand before a frame's body.
inline std::string frameLength(std::uint32_t length) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(length >> shift & 0xFF));
  return bytes;
}

inline std::string frame(std::string_view body) {
  return frameLength(static_cast<std::uint32_t>(body.size())).append(body);
}

/// Reads one frame and returns its body.
inline std::string readFrame(int descriptor) {
  std::uint32_t length = 0;
  int shift = 0;
  for (const char byte : readExactly(descriptor, 4)) {
    length |= static_cast<std::uint32_t>(static_cast<unsigned char>(byte)) << shift;
    shift += 8;
  }
  return readExactly(descriptor, length);
}

}  // namespace ormel::testing
