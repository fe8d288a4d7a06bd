#include "OrmelSDK/Concurrency/PreparedWork.h"

#include <atomic>

#include "OrmelSDK/Concurrency/OutOfMemory.h"

namespace ormel::detail {

class PreparedWork::State final : public WorkItem, public RefCounted {
 public:
  State(Strand strand, Work work, const char* name) noexcept
      : strand_(std::move(strand)), work_(std::move(work)), name_(name) {}

  void post() noexcept {
    if (isPosted_.exchange(true)) return;
    retain();
    strand_.core()->post(*this);
  }

  void run() noexcept override {
    Work work = std::move(work_);
    runOrFailForMemory(name_, work);
    release();
  }
  void discard() noexcept override { release(); }
  const char* name() const noexcept override { return name_; }

 private:
  Strand strand_;
  Work work_;
  const char* name_;
  std::atomic<bool> isPosted_{false};
};

PreparedWork::PreparedWork(const Strand& strand, Work work, const char* name)
    : state_(Ref<State>::adopt(new State(strand, std::move(work), name))) {
  strand.scheduler().prepare();
}

PreparedWork::PreparedWork(const PreparedWork&) noexcept = default;
PreparedWork::PreparedWork(PreparedWork&&) noexcept = default;
PreparedWork& PreparedWork::operator=(PreparedWork other) noexcept {
  state_ = std::move(other.state_);
  return *this;
}
PreparedWork::~PreparedWork() = default;

void PreparedWork::post() const noexcept { state_->post(); }

}  // namespace ormel::detail
