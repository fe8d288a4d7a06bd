#pragma once

#include <cstddef>
#include <string>

namespace ormel::testing {

/// A text like no other, to be searched for in the memory of this process. It can tell the text without holding it.
class Secret {
 public:
  explicit Secret(std::size_t length) : length_(length) {}

  /// A copy of the text: letters and digits.
  std::string text() const;

  /// How often the beginning, the middle and the end of the text stand in memory that this process can write to. Needs
  /// "/proc"; elsewhere nothing is found.
  std::size_t piecesInMemory() const;

 private:
  char at(std::size_t index) const noexcept;
  std::size_t piecesIn(const std::string& memory, std::size_t offset) const;

  std::size_t length_;
};

/// Overwrites the text.
void wipe(std::string& text) noexcept;

/// Has memory overwritten as it is freed, so that a search finds only what is in use. The system's allocator does so
/// with blocks beyond about a kibibyte; sanitizers bring an allocator of their own, which does not.
void overwriteFreedMemory() noexcept;

}  // namespace ormel::testing
