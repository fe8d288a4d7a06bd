#include "BridgeServer.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <exception>
#include <string>
#include <system_error>
#include <utility>

#include "Frame.h"

namespace tessella {

namespace {

/// Each bridge holds a thread and a descriptor, and there is one for each running agent.
constexpr std::size_t mostConnections = 64;

}  // namespace

struct BridgeServer::Connection {
  Connection(Descriptor accepted, Session session_) : descriptor(std::move(accepted)), session(std::move(session_)) {}

  Descriptor descriptor;
  Session session;
  std::atomic<bool> ended = false;
  std::thread thread;
};

BridgeServer::BridgeServer(const ListeningSocket& socket, const EnvelopeHandler& handler, RequestLog& log)
    : socket_(socket), handler_(handler), log_(log) {}

BridgeServer::~BridgeServer() {
  stop_.request_stop();
  for (auto& connection : connections_) ::shutdown(connection.descriptor.get(), SHUT_RDWR);
  for (auto& connection : connections_) connection.thread.join();
}

void BridgeServer::run(int stopDescriptor) {
  while (true) {
    std::array<pollfd, 2> waiting{{{stopDescriptor, POLLIN, 0}, {socket_.descriptor(), POLLIN, 0}}};
    if (::poll(waiting.data(), waiting.size(), -1) < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "Cannot wait for bridges");
    }
    if (waiting[0].revents != 0) return;
    removeEnded();
    accept();
  }
}

void BridgeServer::accept() {
  Descriptor descriptor(::accept(socket_.descriptor(), nullptr, nullptr));
  // A bridge that gave up before we came to it is no failure of ours.
  if (descriptor.get() < 0) return;

  const auto name = "bridge " + std::to_string(++accepted_);
  if (connections_.size() == mostConnections) {
    log_.problem(name, "Refused, since too many bridges are connected.");
    return;
  }
  auto& connection = connections_.emplace_back(std::move(descriptor), Session{name, {}, stop_.get_token()});
  try {
    connection.thread = std::thread([this, &connection] { serve(connection); });
  } catch (const std::system_error& error) {
    log_.problem(name, error.what());
    connections_.pop_back();
  }
}

void BridgeServer::removeEnded() {
  connections_.remove_if([](Connection& connection) {
    if (!connection.ended) return false;
    connection.thread.join();
    return true;
  });
}

void BridgeServer::serve(Connection& connection) const {
  const int descriptor = connection.descriptor.get();
  try {
    while (const auto body = readFrame(descriptor)) {
      writeFrame(descriptor, handler_.reply(*body, connection.session));
    }
  } catch (const std::exception& error) {
    log_.problem(connection.session.name, error.what());
  }
  // The descriptor stays ours until the thread is joined; the peer should hear at once.
  ::shutdown(descriptor, SHUT_RDWR);
  connection.ended = true;
}

}  // namespace tessella
