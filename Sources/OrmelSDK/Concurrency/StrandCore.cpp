#include "OrmelSDK/Concurrency/StrandCore.h"

#include <utility>

namespace ormel::detail {

namespace {

/// The value of `incoming_` while the strand is neither posted nor draining.
class IdleMark final : public WorkItem {
 public:
  void run() noexcept override {}
  void discard() noexcept override {}
  const char* name() const noexcept override { return "idle"; }
};

IdleMark idleMark;
WorkItem* const idle = &idleMark;

}  // namespace

StrandCore::StrandCore(Scheduler& scheduler, const char* name) noexcept
    : scheduler_(scheduler), name_(name), incoming_(idle) {}

void StrandCore::post(WorkItem& item) noexcept {
  if (!isCurrent()) {
    postFromOutside(item);
    return;
  }
  // Items that other threads have already posted must run before this one.
  if (incoming_.load(std::memory_order_relaxed)) takeIncoming();
  item.next = nullptr;
  (localLast_ ? localLast_->next : localFirst_) = &item;
  localLast_ = &item;
}

void StrandCore::postFromOutside(WorkItem& item) noexcept {
  WorkItem* top = incoming_.load(std::memory_order_relaxed);
  do {
    item.next = top == idle ? nullptr : top;
  } while (!incoming_.compare_exchange_weak(top, &item, std::memory_order_acq_rel, std::memory_order_relaxed));
  if (top != idle) return;
  retain();
  scheduler_.post(*this);
}

void StrandCore::run() noexcept {
  StrandCore* const outer = std::exchange(executionState().strand, this);
  for (auto left = scheduler_.strandBatch(); left > 0; --left) {
    WorkItem* item = takeNext();
    if (!item) break;
    item->run();
  }
  executionState().strand = outer;
  if (becomeIdle()) {
    release();
  } else {
    scheduler_.post(*this);
  }
}

void StrandCore::discard() noexcept {
  do {
    while (WorkItem* item = takeNext()) item->discard();
  } while (!becomeIdle());
  release();
}

void StrandCore::takeIncoming() noexcept {
  WorkItem* item = incoming_.exchange(nullptr, std::memory_order_acquire);
  WorkItem* const newest = item;
  WorkItem* reversed = nullptr;
  while (item) {
    WorkItem* const older = std::exchange(item->next, reversed);
    reversed = std::exchange(item, older);
  }
  if (!reversed) return;
  (localLast_ ? localLast_->next : localFirst_) = reversed;
  localLast_ = newest;
}

WorkItem* StrandCore::takeNext() noexcept {
  if (!localFirst_) takeIncoming();
  WorkItem* item = localFirst_;
  if (!item) return nullptr;
  localFirst_ = item->next;
  if (!localFirst_) localLast_ = nullptr;
  return item;
}

bool StrandCore::becomeIdle() noexcept {
  if (localFirst_) return false;
  WorkItem* nothing = nullptr;
  return incoming_.compare_exchange_strong(nothing, idle, std::memory_order_release, std::memory_order_relaxed);
}

}  // namespace ormel::detail
