#pragma once

#ifdef __linux__
#include <sys/epoll.h>
#else
#include <poll.h>
#endif
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "BareChild.h"
#include "Support/Descriptor.h"

namespace ormel::benchmarks {

/// The least that a client must do: a write, a wait in the poller, and a read.
class EpollExchange {
 public:
  EpollExchange() {
#ifdef __linux__
    epoll_event interest{};
    interest.events = EPOLLIN;
    if (poller_.number() < 0 ||
        ::epoll_ctl(poller_.number(), EPOLL_CTL_ADD, child_.outputDescriptor(), &interest) != 0) {
      throw std::runtime_error("cannot wait for the bare server");
    }
#endif
  }

  void exchange(std::string_view line) {
    if (::write(child_.inputDescriptor(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
      throw std::runtime_error("cannot write to the bare server");
    }
    for (;;) {
      waitForOutput();
      const std::string_view answer = child_.read();
      if (answer.empty()) throw std::runtime_error("the bare server has gone");
      if (answer.back() == '\n') return;
    }
  }

 private:
  void waitForOutput() {
#ifdef __linux__
    epoll_event event{};
    ::epoll_wait(poller_.number(), &event, 1, -1);
#else
    pollfd output{child_.outputDescriptor(), POLLIN, 0};
    ::poll(&output, 1, -1);
#endif
  }

  BareChild child_ = BareChild({"app-server"});
#ifdef __linux__
  testing::Descriptor poller_ = testing::Descriptor(::epoll_create1(EPOLL_CLOEXEC));
#endif
};

}  // namespace ormel::benchmarks
