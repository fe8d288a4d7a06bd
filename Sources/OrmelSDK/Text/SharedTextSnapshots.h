#pragma once

#include <cstddef>
#include <string_view>

#include "OrmelSDK/Text/SharedText.h"

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

  /// Adds `piece` to a text that copies are made of. Room that only copies which are gone have written on is used
  /// again, which the text alone could not see.
  void append(std::string_view piece, SharedText& text);

  /// Lets go of the text.
  void giveBack() noexcept;

 private:
  static constexpr std::size_t takenAtOnce = 64;

  SharedTextBuffer* buffer_ = nullptr;
  std::size_t references_ = 0;
};

}  // namespace ormel::detail
