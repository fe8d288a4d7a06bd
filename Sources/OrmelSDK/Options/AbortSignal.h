#pragma once

#include <functional>
#include <memory>

#include "OrmelSDK/Base/UUID.h"

namespace ormel {

class AbortController;

/// Tells operations that the application wants them to end: a latch that is set once and never reset, and observers
/// that are told of it.
///
/// A signal is a handle: its copies, wherever they are kept, are the same signal, and compare equal.
///
///     AbortController controller;
///     TurnOptions options;
///     options.signal = controller;
///     // ... from any thread, at any time:
///     controller.abort();
///
/// *Thread safety*: all operations may be called from any threads at the same time.
///
/// *Object lifetimes*: an observer is kept until it is unregistered, until the signal is aborted, or until the last
/// copy of the signal is gone.
///
/// *Errors*: an exception that leaves an observer leaves `abort`, after the other observers have been called, or
/// `register_`.
class AbortSignal {
 public:
  /// Told of the abort, at most once, on the thread that calls `abort` or `register_`. It must not wait, and may use
  /// the signal.
  using Observer = std::function<void()>;

  /// Constructs a signal of its own, which is not aborted.
  AbortSignal();
  /// The controller's signal.
  AbortSignal(const AbortController& controller);
  AbortSignal(const AbortSignal&) = default;
  AbortSignal& operator=(const AbortSignal&) = default;

  bool isAborted() const;

  /// Keeps the observer until the abort; if that has happened, calls it before returning. Observers are called in no
  /// particular order. The token that is returned takes the observer away again by `unregister`.
  UUID register_(Observer observer) const;

  /// Takes an observer away. Does nothing if the token stands for none, as after the abort: its observer has been
  /// called then, or another thread is about to.
  void unregister(const UUID& token) const;

  /// Sets the latch and calls the observers; the second time, does nothing.
  void abort() const;

  friend bool operator==(const AbortSignal&, const AbortSignal&) = default;

 private:
  struct State;

  std::shared_ptr<State> state_;
};

/// The application's side of a signal.
///
/// *Thread safety*: as that of the signal.
class AbortController {
 public:
  AbortController() = default;

  /// Handed to each operation that `abort` is to end.
  const AbortSignal signal;

  void abort() const { signal.abort(); }
};

inline AbortSignal::AbortSignal(const AbortController& controller) : AbortSignal(controller.signal) {}

}  // namespace ormel
