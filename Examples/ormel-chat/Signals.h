#pragma once

#include "WakePipe.h"

namespace ormel::chat {

/// Notes the signals by which a user ends things, and wakes the loop. One object at a time.
class Signals {
 public:
  explicit Signals(const WakePipe& wakePipe);
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals();

  /// How often Ctrl-C was pressed since the last call.
  int takeInterrupts() const noexcept;

  /// The signal that asks the program to end, or 0.
  int termination() const noexcept;
};

}  // namespace ormel::chat
