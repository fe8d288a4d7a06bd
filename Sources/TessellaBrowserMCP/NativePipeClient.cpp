#include "TessellaBrowserMCP/NativePipeClient.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONEncoding.h"
#include "TessellaBrowserMCP/BridgeFailure.h"
#include "TessellaBrowserMCP/DescriptorIO.h"

namespace ormel {

namespace {

// Size of a socket address's path on macOS, terminating zero included; the limit is the same on every platform.
constexpr std::size_t pathFieldSize = 104;
static_assert(sizeof(sockaddr_un::sun_path) >= pathFieldSize);

constexpr std::size_t lengthSize = sizeof(std::uint32_t);

int connectTo(int descriptor, std::string_view path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
  return ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), size);
}

// The bridge may have been started with a standard stream closed; the socket must not take its descriptor.
int openSocket() {
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
  if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
  const int moved = ::fcntl(descriptor, F_DUPFD, STDERR_FILENO + 1);
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return moved;
}

void storeLength(char* field, std::size_t length) {
  for (std::size_t at = 0; at < lengthSize; ++at) field[at] = static_cast<char>(length >> (8 * at));
}

std::size_t loadLength(std::string_view field) {
  std::size_t length = 0;
  for (std::size_t at = 0; at < lengthSize; ++at) {
    length |= static_cast<std::size_t>(static_cast<unsigned char>(field[at])) << (8 * at);
  }
  return length;
}

void checkSize(const detail::ByteBuffer& frame) {
  if (frame.size() - lengthSize > NativePipeClient::maximumRequestSize) throw BridgeFailure::payloadTooLarge();
}

JSONValue unwrap(const JSONValue& reply, std::int64_t id) {
  const JSONValue* replyID = reply.find("id");
  const JSONValue* result = reply.find("result");
  if (!replyID || !result || replyID->numberValue() != static_cast<double>(id)) throw BridgeFailure::invalidResponse();
  return *result;
}

}  // namespace

NativePipeClient::NativePipeClient(std::string_view path) {
  if (path.size() >= pathFieldSize) throw BridgeFailure::invalidSocketPath();
  descriptor_ = openSocket();
  if (descriptor_ < 0) throw BridgeFailure::connectFailed(errno);
  if (connectTo(descriptor_, path) < 0) {
    const int error = errno;
    ::close(descriptor_);
    throw BridgeFailure::connectFailed(error);
  }
}

NativePipeClient::~NativePipeClient() { ::close(descriptor_); }

JSONValue NativePipeClient::request(std::string_view token, std::string_view workspacePath, JSONValue message) {
  const std::int64_t id = ids_.take();
  encodeFrame(id, token, workspacePath, message);
  message = nullptr;
  writeAll(frame_.view());
  return unwrap(receive(), id);
}

// The envelope around the message is small and constant, so it is written as text without building a value.
void NativePipeClient::encodeFrame(std::int64_t id, std::string_view token, std::string_view workspacePath,
                                   const JSONValue& message) {
  frame_.clear();
  frame_.room(lengthSize);
  frame_.commit(lengthSize);
  frame_.append(R"({"jsonrpc":"2.0","id":)");
  detail::encodeJSON(id, frame_);
  frame_.append(R"(,"method":"tessellaMCP","params":{"token":)");
  detail::encodeJSON(token, frame_);
  frame_.append(R"(,"workspacePath":)");
  detail::encodeJSON(workspacePath, frame_);
  frame_.append(R"(,"message":)");
  detail::encodeJSONInPieces(message, frame_, lengthSize + maximumRequestSize, checkSize);
  frame_.append("}}");
  checkSize(frame_);
  storeLength(frame_.data(), frame_.size() - lengthSize);
}

JSONValue NativePipeClient::receive() {
  const std::size_t bodySize = loadLength(readExactly(lengthSize).view());
  if (bodySize > maximumReplySize) throw BridgeFailure::payloadTooLarge();
  return detail::decodePaddedJSON(readExactly(bodySize));
}

// The buffer has room for the padding that the decoder needs behind the bytes.
detail::ByteBuffer NativePipeClient::readExactly(std::size_t count) {
  detail::ByteBuffer bytes;
  bytes.room(count + detail::jsonPadding);
  while (bytes.size() < count) {
    const ssize_t result = detail::readRetrying(descriptor_, bytes.data() + bytes.size(), count - bytes.size());
    if (result <= 0) throw BridgeFailure::disconnected();
    bytes.commit(static_cast<std::size_t>(result));
  }
  return bytes;
}

void NativePipeClient::writeAll(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t result = detail::writeRetrying(descriptor_, bytes);
    if (result <= 0) throw BridgeFailure::disconnected();
    bytes.remove_prefix(static_cast<std::size_t>(result));
  }
}

}  // namespace ormel
