#include "OrmelSDK/Concurrency/TaskSet.h"

namespace ormel::detail {

void TaskSet::taskEnded(std::size_t index, const std::exception_ptr& failure) noexcept {
  if (decision_ == Decision::byEnd || failure) {
    auto expected = nobody;
    if (decided_.compare_exchange_strong(expected, index, std::memory_order_acq_rel)) {
      failure_ = failure;
      requestStop();
    }
  }
  if (checkOut()) resume();
}

}  // namespace ormel::detail
