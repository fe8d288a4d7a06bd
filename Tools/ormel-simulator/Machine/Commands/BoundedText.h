#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ormel::simulator {

/// The beginning of what a program says: as much as is kept, and then how much more there was.
class BoundedText {
 public:
  static constexpr std::size_t limit = std::size_t{1} << 20;

  /// Gives the part that is kept.
  std::string_view append(std::string_view bytes);

  bool isFull() const noexcept { return kept_.size() == limit; }
  bool isCut() const noexcept { return dropped_ > 0; }

  const std::string& kept() const noexcept { return kept_; }
  /// The kept part, with a line about the rest.
  std::string text() const;

 private:
  std::string kept_;
  std::size_t dropped_ = 0;
};

}  // namespace ormel::simulator
