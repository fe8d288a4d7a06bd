#pragma once

namespace ormel::chat {

/// Wakes a loop that polls descriptors, from any thread and from signal handlers.
class WakePipe {
 public:
  WakePipe();
  WakePipe(const WakePipe&) = delete;
  WakePipe& operator=(const WakePipe&) = delete;
  ~WakePipe();

  /// Becomes readable by `wake`.
  int descriptor() const noexcept { return ends_[0]; }

  /// May be called anywhere and never blocks.
  void wake() const noexcept;

  /// Takes back all that woke so far.
  void drain() const noexcept;

 private:
  int ends_[2];
};

}  // namespace ormel::chat
