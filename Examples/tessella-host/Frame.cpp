#include "Frame.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace tessella {

namespace {

constexpr std::size_t headerSize = 4;

/// Fills the buffer and returns how many bytes came before the end of the stream.
std::size_t readUpTo(int descriptor, char* buffer, std::size_t size) {
  std::size_t position = 0;
  while (position < size) {
    const auto count = ::read(descriptor, buffer + position, size - position);
    if (count == 0) break;
    if (count > 0) {
      position += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      throw ConnectionError("The connection failed: " + std::string(std::strerror(errno)) + ".");
    }
  }
  return position;
}

std::uint32_t decodeLength(const std::array<char, headerSize>& header) {
  std::uint32_t length = 0;
  for (std::size_t i = 0; i < headerSize; ++i) {
    length |= static_cast<std::uint32_t>(static_cast<unsigned char>(header[i])) << (8 * i);
  }
  return length;
}

std::string makeFrame(std::string_view body) {
  std::string frame;
  frame.reserve(headerSize + body.size());
  for (std::size_t i = 0; i < headerSize; ++i) frame += static_cast<char>(body.size() >> (8 * i) & 0xFF);
  return frame.append(body);
}

}  // namespace

std::optional<std::string> readFrame(int descriptor) {
  std::array<char, headerSize> header;
  const auto headerBytes = readUpTo(descriptor, header.data(), header.size());
  if (headerBytes == 0) return std::nullopt;
  if (headerBytes < header.size()) throw ConnectionError("The connection ended inside a frame.");

  const auto length = decodeLength(header);
  if (length > largestRequestBody) {
    throw ConnectionError("A frame of " + std::to_string(length) + " bytes exceeds the limit of 8 MiB.");
  }
  std::string body(length, '\0');
  if (readUpTo(descriptor, body.data(), length) < length) {
    throw ConnectionError("The connection ended inside a frame.");
  }
  return body;
}

void writeFrame(int descriptor, std::string_view body) {
  const auto frame = makeFrame(body);
  std::size_t position = 0;
  while (position < frame.size()) {
    const auto count = ::write(descriptor, frame.data() + position, frame.size() - position);
    if (count > 0) {
      position += static_cast<std::size_t>(count);
    } else if (count == 0 || errno != EINTR) {
      throw ConnectionError("The bridge went away before it had its answer.");
    }
  }
}

}  // namespace tessella
