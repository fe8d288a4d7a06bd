#pragma once

#include "WakePipe.h"

namespace ormel::chat {

/// Notes the signals by which a user ends things, and wakes the loop. One object at a time.
class Signals {
 public:
  /// A program that does not take suspensions is stopped by Ctrl-Z as usual.
  explicit Signals(const WakePipe& wakePipe, bool takesSuspensions = false);
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals();

  /// How often Ctrl-C was pressed since the last call.
  int takeInterrupts() const noexcept;

  /// Whether Ctrl-Z was pressed since the last call. It is up to the program then to stop.
  bool takeSuspension() const noexcept;

  /// The signal that asks the program to end, or 0.
  int termination() const noexcept;
};

}  // namespace ormel::chat
