#include "OrmelSDK/Concurrency/WaitRegistry.h"

namespace ormel::detail {

void WaitRecord::unlink() noexcept {
  (previous_ ? previous_->next_ : registry_->first_) = next_;
  (next_ ? next_->previous_ : registry_->last_) = previous_;
  registry_ = nullptr;
  previous_ = next_ = nullptr;
}

WaitRegistry::~WaitRegistry() {
  while (first_) first_->leave();
}

void WaitRegistry::add(WaitRecord& record) noexcept {
  record.leave();
  record.registry_ = this;
  record.previous_ = last_;
  (last_ ? last_->next_ : first_) = &record;
  last_ = &record;
}

}  // namespace ormel::detail
