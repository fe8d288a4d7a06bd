#pragma once

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Platform/EventLoop.h"

namespace ormel::detail {

class IORuntime;

/// A scheduler on the threads of an `IORuntime`, for the library's own work or for code of the application, which then
/// runs on threads that the runtime lends for it.
class IOScheduler final : public Scheduler {
 public:
  IOScheduler(IORuntime& runtime, WorkKind kind) noexcept : runtime_(runtime), kind_(kind) {}

  using Scheduler::post;
  std::uint64_t now() const noexcept override { return EventLoop::now(); }
  void post(WorkItem& item) noexcept override;
  void arm(TimerItem& item, std::uint64_t deadline) override;
  bool disarm(TimerItem& item) noexcept override;
  std::size_t strandBatch() const noexcept override { return 64; }
  void prepare() override;
  Scheduler& applicationScheduler() noexcept override { return productionScheduler(); }
  bool runsApplicationCode() const noexcept override { return kind_ == WorkKind::application; }

 private:
  IORuntime& runtime_;
  const WorkKind kind_;
};

}  // namespace ormel::detail
