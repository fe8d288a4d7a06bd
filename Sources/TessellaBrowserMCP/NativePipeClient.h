#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "TessellaBrowserMCP/EnvelopeCounter.h"

namespace ormel {

/// The connection to the host application: one request and one reply at a time over a Unix-domain stream socket.
///
/// A frame is a body's length in four little-endian bytes, then the body, one JSON text.
///
/// *Errors*: `BridgeFailure`; the errors of decoding and encoding JSON.
/// *Thread safety*: none; every call blocks until its reply has come or the host has gone.
/// *Signals*: a write to a host that has gone raises SIGPIPE.
class NativePipeClient {
 public:
  static constexpr std::size_t maximumRequestSize = std::size_t{8} << 20;
  static constexpr std::size_t maximumReplySize = std::size_t{64} << 20;

  /// Connects to the socket at `path`.
  explicit NativePipeClient(std::string_view path);
  NativePipeClient(const NativePipeClient&) = delete;
  NativePipeClient& operator=(const NativePipeClient&) = delete;
  ~NativePipeClient();

  /// Sends `message` with the credentials around it and returns the `result` of the host's reply.
  ///
  /// A refused reply does not resynchronise the connection: no bytes are skipped.
  JSONValue request(std::string_view token, std::string_view workspacePath, JSONValue message);

 private:
  void encodeFrame(std::int64_t id, std::string_view token, std::string_view workspacePath, const JSONValue& message);
  JSONValue receive();
  detail::ByteBuffer readExactly(std::size_t count);
  void writeAll(std::string_view bytes);

  int descriptor_;
  EnvelopeCounter ids_;
  /// Reused by all requests; it grows little beyond the largest request that can be sent.
  detail::ByteBuffer frame_;
};

}  // namespace ormel
