#include "OrmelSDK/Concurrency/UniqueFunction.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <utility>

namespace ormel::detail {
namespace {

template <typename F>
void expectCalledMovedAndDestroyedOnce(F function, const std::shared_ptr<int>& held) {
  const auto before = held.use_count();
  {
    UniqueFunction<int(int)> first(std::move(function));
    EXPECT_EQ(held.use_count(), before);
    EXPECT_EQ(first(2), 3);
    UniqueFunction<int(int)> second(std::move(first));
    EXPECT_FALSE(first);
    EXPECT_EQ(second(3), 4);
    UniqueFunction<int(int)> third;
    third = std::move(second);
    EXPECT_EQ(third(4), 5);
    third = nullptr;
    EXPECT_FALSE(third);
    EXPECT_EQ(held.use_count(), before - 1);
  }
  EXPECT_EQ(held.use_count(), before - 1);
}

TEST(UniqueFunction, HoldsASmallCallableInside) {
  auto held = std::make_shared<int>(1);
  expectCalledMovedAndDestroyedOnce([held](int value) { return value + *held; }, held);
}

TEST(UniqueFunction, HoldsALargeCallableOutside) {
  auto held = std::make_shared<int>(1);
  const std::array<int, 64> large{};
  expectCalledMovedAndDestroyedOnce([held, large](int value) { return value + *held + large[0]; }, held);
}

TEST(UniqueFunction, HoldsACallableThatCannotBeCopied) {
  UniqueFunction<std::unique_ptr<int>()> function(
      [owned = std::make_unique<int>(7)]() mutable { return std::move(owned); });
  EXPECT_EQ(*function(), 7);
}

}  // namespace
}  // namespace ormel::detail
