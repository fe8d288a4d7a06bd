#include "ListeningSocket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace tessella {

namespace {

/// A bridge accepts no longer path, whatever the platform's own limit is.
constexpr std::size_t longestPath = 103;  // bytes

/// Makes what is created private from birth; a chmod afterwards would leave a gap.
class CreationMask {
 public:
  explicit CreationMask(mode_t withheld) : previousMask_(::umask(withheld)) {}
  CreationMask(const CreationMask&) = delete;
  CreationMask& operator=(const CreationMask&) = delete;
  ~CreationMask() { ::umask(previousMask_); }

 private:
  mode_t previousMask_;
};

void requireSuccess(int result, const std::string& what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  if (path.size() > longestPath) {
    throw std::runtime_error("The socket path is longer than 103 bytes: " + path);
  }
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

Descriptor openSocket() {
  Descriptor descriptor(::socket(AF_UNIX, SOCK_STREAM, 0));
  requireSuccess(descriptor.get(), "Cannot create a socket");
  return descriptor;
}

bool somebodyListens(const sockaddr_un& address) {
  const auto probe = openSocket();
  if (::connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return true;
  if (errno == ECONNREFUSED) return false;
  throw std::system_error(errno, std::generic_category(), "Cannot examine the existing socket");
}

void removeStaleSocket(const std::string& path, const sockaddr_un& address) {
  struct stat status;
  if (::lstat(path.c_str(), &status) != 0) return;
  if (!S_ISSOCK(status.st_mode)) throw std::runtime_error("Something that is no socket stands at " + path);
  if (somebodyListens(address)) throw std::runtime_error("Another host listens on " + path);
  requireSuccess(::unlink(path.c_str()), "Cannot remove the stale socket");
}

void createDirectory(const std::filesystem::path& directory) {
  const CreationMask onlyThisUser(0077);
  if (!directory.empty()) std::filesystem::create_directories(directory);
}

void bindTo(int descriptor, const std::string& path, const sockaddr_un& address) {
  const CreationMask onlyThisUserToReadAndWrite(0177);
  const auto result = ::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  requireSuccess(result, "Cannot create the socket " + path);
}

}  // namespace

ListeningSocket::ListeningSocket(std::filesystem::path path) : path_(std::move(path)), descriptor_(openSocket()) {
  const auto address = addressOf(path_.string());
  createDirectory(path_.parent_path());
  removeStaleSocket(path_.string(), address);
  bindTo(descriptor_.get(), path_.string(), address);

  struct stat status;
  requireSuccess(::lstat(path_.c_str(), &status), "Cannot examine the socket");
  device_ = status.st_dev;
  inode_ = status.st_ino;
  requireSuccess(::listen(descriptor_.get(), SOMAXCONN), "Cannot listen");
}

ListeningSocket::~ListeningSocket() {
  struct stat status;
  const bool stillOurs = ::lstat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
  if (stillOurs) ::unlink(path_.c_str());
}

}  // namespace tessella
