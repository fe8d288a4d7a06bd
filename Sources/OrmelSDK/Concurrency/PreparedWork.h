#pragma once

#include <utility>

#include "OrmelSDK/Concurrency/Strand.h"

namespace ormel::detail {

/// Work for a strand whose queueing cannot fail: the memory for it is had when it is made. For callbacks that nobody
/// can be told a failure of.
///
/// *Thread safety*: all members may be called from any thread.
///
/// *Object lifetimes*: copies are the same work.
class PreparedWork {
 public:
  PreparedWork(const Strand& strand, Work work, const char* name);
  PreparedWork(const PreparedWork&) noexcept;
  PreparedWork(PreparedWork&&) noexcept;
  PreparedWork& operator=(PreparedWork) noexcept;
  ~PreparedWork();

  /// Queues the work. Only the first call does.
  void post() const noexcept;
  void operator()() const noexcept { post(); }

 private:
  class State;
  Ref<State> state_;
};

}  // namespace ormel::detail
