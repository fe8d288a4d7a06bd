#pragma once

#include <cstddef>
#include <string_view>

#include "OrmelSDK/Text/SharedText.h"

namespace ormel::detail {

/// Makes snapshots of a growing text, one after each piece, that another thread drops. References are taken in bulk: a
/// single increment would contend for the cache line that the other thread has just decremented.
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

  /// Appends `piece` to a text that snapshots are made of. Reuses room that only dropped snapshots had written to,
  /// which the text alone could not detect.
  void append(std::string_view piece, SharedText& text);

  /// Releases the references that are held in reserve.
  void giveBack() noexcept;

 private:
  static constexpr std::size_t takenAtOnce = 64;

  SharedTextBuffer* buffer_ = nullptr;
  std::size_t references_ = 0;
};

}  // namespace ormel::detail
