#include "Support/UnixListener.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace ormel::testing {

UnixListener::UnixListener(std::string path) : path_(std::move(path)), listening_(::socket(AF_UNIX, SOCK_STREAM, 0)) {
  sockaddr_un address{};
  if (path_.size() > sizeof address.sun_path) throw std::length_error("the socket's path is too long");
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path_.data(), path_.size());
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path_.size());
  setCloseOnExec(listening_.number());
  if (::bind(listening_.number(), reinterpret_cast<const sockaddr*>(&address), size) < 0 ||
      ::listen(listening_.number(), 8) < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot listen at " + path_);
  }
}

Descriptor UnixListener::accept() const {
  awaitReadable(listening_.number());
  Descriptor connection(::accept(listening_.number(), nullptr, nullptr));
  setCloseOnExec(connection.number());
  setNonBlocking(connection.number(), true);
  return connection;
}

}  // namespace ormel::testing
