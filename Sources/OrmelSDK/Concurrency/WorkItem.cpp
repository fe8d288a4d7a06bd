#include "OrmelSDK/Concurrency/WorkItem.h"

#include "OrmelSDK/Concurrency/OutOfMemory.h"

namespace ormel::detail {

namespace {

class PostedWork final : public WorkItem {
 public:
  PostedWork(Work work, const char* name) noexcept : work_(std::move(work)), name_(name) {}

  void run() noexcept override {
    runOrFailForMemory(name_, work_);
    delete this;
  }
  void discard() noexcept override { delete this; }
  const char* name() const noexcept override { return name_; }

 private:
  Work work_;
  const char* name_;
};

}  // namespace

WorkItem& makeWorkItem(Work work, const char* name) { return *new PostedWork(std::move(work), name); }

}  // namespace ormel::detail
