#pragma once

#include <list>
#include <stop_token>
#include <thread>

#include "Descriptor.h"
#include "EnvelopeHandler.h"
#include "ListeningSocket.h"
#include "RequestLog.h"

namespace tessella {

/// Serves bridges, each on a thread of its own.
class BridgeServer {
 public:
  /// All three must outlive the server.
  BridgeServer(const ListeningSocket& socket, const EnvelopeHandler& handler, RequestLog& log);
  BridgeServer(const BridgeServer&) = delete;
  BridgeServer& operator=(const BridgeServer&) = delete;
  /// Closes the connections and waits for their threads.
  ~BridgeServer();

  /// Accepts bridges until `stopDescriptor` becomes readable.
  void run(int stopDescriptor);

 private:
  struct Connection;

  void accept();
  void removeEnded();
  void serve(Connection& connection) const;

  const ListeningSocket& socket_;
  const EnvelopeHandler& handler_;
  RequestLog& log_;
  std::stop_source stop_;
  std::list<Connection> connections_;
  unsigned long accepted_ = 0;
};

}  // namespace tessella
