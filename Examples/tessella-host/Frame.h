#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tessella {

// A frame is a 4-byte little-endian length and as many bytes of JSON.

/// The largest body that a bridge sends, in bytes.
inline constexpr std::size_t largestRequestBody = 8 * 1024 * 1024;

/// The largest body that a bridge accepts, in bytes.
inline constexpr std::size_t largestReplyBody = 64 * 1024 * 1024;

/// The connection is of no more use: its peer is gone, or nobody knows where the next frame begins.
class ConnectionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The body of the next frame, or nothing if the peer closed the connection between two frames. Fails with
/// `ConnectionError`, for an oversized frame before its body is read.
std::optional<std::string> readFrame(int descriptor);

/// Sends a frame. `body` must not be longer than `largestReplyBody`. Fails with `ConnectionError`.
void writeFrame(int descriptor, std::string_view body);

}  // namespace tessella
