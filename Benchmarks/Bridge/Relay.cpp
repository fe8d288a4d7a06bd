// Copies lines from standard input into frames on the socket, and frames from it into lines on standard output,
// without looking at them.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t lengthSize = sizeof(std::uint32_t);

int connectToHost() {
  const char* path = std::getenv("KESTRION_BROWSER_SOCKET");
  sockaddr_un address{};
  if (!path || std::strlen(path) >= sizeof address.sun_path) std::exit(EXIT_FAILURE);
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, path);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) std::exit(EXIT_FAILURE);
  return descriptor;
}

void writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count <= 0) std::exit(EXIT_FAILURE);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void readExactly(int descriptor, char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t read_ = read(descriptor, bytes, count);
    if (read_ <= 0) std::exit(EXIT_FAILURE);
    bytes += read_;
    count -= static_cast<std::size_t>(read_);
  }
}

// Reads one line behind the room for its length; the client waits for each answer, so that no second line follows.
std::size_t readLine(std::vector<char>& frame) {
  std::size_t end = lengthSize;
  for (;;) {
    if (frame.size() - end < 65536) frame.resize(frame.size() * 2);
    const ssize_t count = read(STDIN_FILENO, frame.data() + end, frame.size() - end);
    if (count <= 0) std::exit(EXIT_SUCCESS);
    end += static_cast<std::size_t>(count);
    if (frame[end - 1] == '\n') return end - 1 - lengthSize;
  }
}

}  // namespace

int main() {
  const int host = connectToHost();
  std::vector<char> buffer(1 << 18);
  for (;;) {
    auto length = static_cast<std::uint32_t>(readLine(buffer));
    std::memcpy(buffer.data(), &length, lengthSize);
    writeAll(host, {buffer.data(), lengthSize + length});
    readExactly(host, reinterpret_cast<char*>(&length), lengthSize);
    if (buffer.size() <= length) buffer.resize(length + std::size_t{1});
    readExactly(host, buffer.data(), length);
    buffer[length] = '\n';
    writeAll(STDOUT_FILENO, {buffer.data(), length + std::size_t{1}});
  }
}
