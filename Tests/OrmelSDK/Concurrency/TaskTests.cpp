#include "OrmelSDK/Concurrency/Task.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Strand.h"

namespace ormel {
namespace {

Task<int> seven() { co_return 7; }
Task<std::string> text() { co_return std::to_string(co_await seven()); }
Task<void> throwing() {
  co_await seven();
  throw std::runtime_error("thrown");
}

TEST(Task, GivesItsValueToTheBlockingCaller) { EXPECT_EQ(text().get(), "7"); }

TEST(Task, ThrowsWhatLeftItsBody) { EXPECT_THROW(throwing().get(), std::runtime_error); }

TEST(Task, SleepsOnTheProductionScheduler) { sleepFor(productionScheduler(), std::chrono::milliseconds(2)).get(); }

TEST(Task, AwaitsThousandsOfTasksInARowWithoutGrowingTheStack) {
  auto loop = []() -> Task<int> {
    int sum = 0;
    for (int i = 0; i < 100'000; ++i) sum += co_await seven();
    co_return sum;
  };
  EXPECT_EQ(loop().get(), 700'000);
}

}  // namespace
}  // namespace ormel
