#pragma once

#include <cstddef>

#include "OrmelSDK/SharedText.h"

namespace ormel::detail {

/// Makes copies of a text that grows, one after each piece, for another thread to drop. References are taken many at a
/// time: each single one would have to wait for the processor that has just dropped one.
///
/// *Thread safety*: none.
class SharedTextSnapshots {
 public:
  SharedTextSnapshots() noexcept = default;
  SharedTextSnapshots(const SharedTextSnapshots&) = delete;
  SharedTextSnapshots& operator=(const SharedTextSnapshots&) = delete;
  ~SharedTextSnapshots() { giveBack(); }

  /// A copy of the text.
  SharedText of(const SharedText& text) noexcept;

  /// Lets go of the text.
  void giveBack() noexcept;

 private:
  static constexpr std::size_t takenAtOnce = 64;

  SharedTextBuffer* buffer_ = nullptr;
  std::size_t references_ = 0;
};

}  // namespace ormel::detail
