#pragma once

#include <memory>
#include <utility>

#include "OrmelSDK/Concurrency/WorkItem.h"

namespace ormel::detail {

/// Runs the item where code of the application may run: within this call, or else as a piece of the application's
/// scheduler.
void runForApplication(WorkItem& item) noexcept;

template <typename T>
class ApplicationObject final : public WorkItem {
 public:
  template <typename... Args>
  explicit ApplicationObject(Args&&... args) : object(std::forward<Args>(args)...) {}

  void run() noexcept override { delete this; }
  void discard() noexcept override { delete this; }
  const char* name() const noexcept override { return "destructor of the application"; }

  T object;
};

/// An object that holds objects of the application, such as the captures of a handler. The last reference may be
/// dropped anywhere, also on a thread that serves the I/O: the destructors run on a thread of the application, which
/// they may block.
template <typename T, typename... Args>
std::shared_ptr<T> makeApplicationObject(Args&&... args) {
  auto* const owner = new ApplicationObject<T>(std::forward<Args>(args)...);
  return std::shared_ptr<T>(&owner->object, [owner](T*) { runForApplication(*owner); });
}

}  // namespace ormel::detail
