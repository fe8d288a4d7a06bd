#include "Support/Secret.h"

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string_view>
#include <vector>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "Support/Descriptor.h"

namespace ormel::testing {

namespace {

constexpr std::size_t pieceSize = 32;

struct Region {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

std::vector<Region> writableMemory() {
  std::vector<Region> regions;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::istringstream fields(line);
    Region region;
    char dash = 0;
    std::string rights;
    fields >> std::hex >> region.begin >> dash >> region.end >> rights;
    if (rights.starts_with("rw")) regions.push_back(region);
  }
  return regions;
}

}  // namespace

char Secret::at(std::size_t index) const noexcept {
  constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::uint64_t mixed = (index + length_) * 0x9E3779B97F4A7C15ULL;
  mixed = (mixed ^ (mixed >> 31)) * 0xBF58476D1CE4E5B9ULL;
  return letters[(mixed >> 33) % letters.size()];
}

std::string Secret::text() const {
  std::string text(length_, ' ');
  for (std::size_t index = 0; index < length_; ++index) text[index] = at(index);
  return text;
}

std::size_t Secret::piecesIn(const std::string& memory, std::size_t offset) const {
  // Shorter than a piece, lest the search finds what it searches for.
  std::array<char, 8> start{};
  for (std::size_t index = 0; index < start.size(); ++index) start[index] = at(offset + index);
  std::size_t pieces = 0;
  const char* const end = memory.data() + memory.size();
  const char* place = memory.data();
  while ((place = static_cast<const char*>(
              ::memmem(place, static_cast<std::size_t>(end - place), start.data(), start.size())))) {
    std::size_t same = 0;
    while (same < pieceSize && place + same < end && place[same] == at(offset + same)) ++same;
    if (same == pieceSize) ++pieces;
    ++place;
  }
  return pieces;
}

std::size_t Secret::piecesInMemory() const {
  constexpr std::size_t most = std::size_t{1} << 20;
  const Descriptor memory(::open("/proc/self/mem", O_RDONLY | O_CLOEXEC));
  std::string bytes(most, '\0');
  std::size_t pieces = 0;
  for (const Region& region : writableMemory()) {
    for (std::uintptr_t place = region.begin; place < region.end; place += most - pieceSize) {
      bytes.resize(most);
      const auto wanted = std::min<std::uintptr_t>(most, region.end - place);
      const auto count = ::pread(memory.number(), bytes.data(), wanted, static_cast<off_t>(place));
      bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
      for (const std::size_t offset : {std::size_t{0}, length_ / 2, length_ - pieceSize}) {
        pieces += piecesIn(bytes, offset);
      }
      wipe(bytes);
    }
  }
  return pieces;
}

void wipe(std::string& text) noexcept {
  for (volatile char& character : text) character = '\0';
}

void overwriteFreedMemory() noexcept {
#ifdef M_PERTURB
  ::mallopt(M_PERTURB, 0xA5);
#endif
}

}  // namespace ormel::testing
