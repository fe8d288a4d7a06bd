#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

#include "OrmelSDK/JSON/JSONStorage.h"

namespace ormel::coding {

/// Identifies a text by its ends and its size: up to 16 bytes completely, beyond that up to the middle.
struct WordFingerprint {
  std::uint64_t head = 0;
  std::uint64_t tail = 0;
  std::uint32_t size = 0;

  static constexpr std::size_t told = 2 * sizeof(std::uint64_t);

  friend constexpr bool operator==(const WordFingerprint&, const WordFingerprint&) = default;

  /// The fingerprint of a text in the storage of a JSON value.
  static WordFingerprint at(const std::byte* stored) noexcept {
    const std::string_view text = detail::storedText(stored);
    const auto size = static_cast<std::uint32_t>(text.size());
    const std::uint64_t head = detail::wordAt(text.data());
    if (size < sizeof head) return {head & detail::firstBytes(size), 0, size};
    return {head, detail::wordAt(text.data() + size - sizeof head), size};
  }

  static consteval WordFingerprint of(std::string_view text) {
    constexpr std::size_t wordSize = sizeof(std::uint64_t);
    const auto size = static_cast<std::uint32_t>(text.size());
    if (size < wordSize) return {word(text), 0, size};
    return {word(text.substr(0, wordSize)), word(text.substr(size - wordSize)), size};
  }

  constexpr std::uint64_t mixed() const noexcept { return head ^ std::rotl(tail, 23) ^ size; }

 private:
  static consteval std::uint64_t word(std::string_view bytes) {
    std::uint64_t word = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      const std::size_t shift = std::endian::native == std::endian::little ? at : sizeof word - 1 - at;
      word |= std::uint64_t{static_cast<unsigned char>(bytes[at])} << 8 * shift;
    }
    return word;
  }
};

struct IndexedWord {
  WordFingerprint fingerprint;
  const char* text = nullptr;
};

/// Looks a text up in a list of words in constant time. A view of a `WordTable`.
class WordIndex {
 public:
  static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

  constexpr WordIndex(const IndexedWord* words, std::size_t count, const std::uint8_t* slots, std::uint64_t multiplier,
                      unsigned shift) noexcept
      : words_(words), count_(count), slots_(slots), multiplier_(multiplier), shift_(shift) {}

  std::size_t size() const noexcept { return count_; }

  std::string_view operator[](std::size_t index) const noexcept {
    return {words_[index].text, words_[index].fingerprint.size};
  }

  /// The position of a text in the storage of a JSON value, byte by byte, or `none`.
  std::size_t find(const std::byte* stored) const noexcept {
    const WordFingerprint fingerprint = WordFingerprint::at(stored);
    const std::size_t position = slots_[fingerprint.mixed() * multiplier_ >> shift_];
    const IndexedWord& word = words_[position];
    if (fingerprint != word.fingerprint) return none;
    if (fingerprint.size > WordFingerprint::told) [[unlikely]] {
      constexpr std::size_t head = WordFingerprint::told / 2;
      const char* const text = detail::storedText(stored).data();
      if (std::memcmp(text + head, word.text + head, fingerprint.size - WordFingerprint::told) != 0) return none;
    }
    return position;
  }

 private:
  const IndexedWord* words_;
  std::size_t count_;
  const std::uint8_t* slots_;
  std::uint64_t multiplier_;
  unsigned shift_;
};

/// Words in the making of a table, each once.
template <std::size_t capacity>
struct WordList {
  std::array<std::string_view, capacity> words{};
  std::size_t count = 0;

  /// The position of a word, which is added at the end if it is new.
  constexpr std::size_t add(std::string_view word) {
    std::size_t position = 0;
    while (position < count && words[position] != word) ++position;
    if (position == count) words[count++] = word;
    return position;
  }
};

/// The index of words that are known when the program is compiled. Looks for a way of hashing that gives every word a
/// slot of its own; a slot without a word names any one, since a found word is compared.
template <std::size_t count>
class WordTable {
 public:
  static_assert(count > 0 && count < 256);

  template <std::size_t capacity>
  consteval explicit WordTable(const WordList<capacity>& list) {
    for (std::size_t position = 0; position < count; ++position) {
      words_[position] = {WordFingerprint::of(list.words[position]), list.words[position].data()};
    }
    while (!takesMultiplier()) multiplier_ = multiplier_ * 6364136223846793005u + 1442695040888963406u;
  }

  constexpr WordIndex index() const noexcept { return {words_.data(), count, slots_.data(), multiplier_, shift}; }

 private:
  static constexpr std::size_t slotCount = std::bit_ceil(4 * count);
  static constexpr unsigned shift = 64 - static_cast<unsigned>(std::countr_zero(slotCount));

  consteval bool takesMultiplier() {
    slots_ = {};
    std::array<bool, slotCount> taken{};
    for (std::size_t position = 0; position < count; ++position) {
      const std::uint64_t slot = words_[position].fingerprint.mixed() * multiplier_ >> shift;
      if (taken[slot]) return false;
      taken[slot] = true;
      slots_[slot] = static_cast<std::uint8_t>(position);
    }
    return true;
  }

  std::array<IndexedWord, count> words_{};
  std::array<std::uint8_t, slotCount> slots_{};
  std::uint64_t multiplier_ = 0x9E3779B97F4A7C15u;
};

/// Puts the place of each member whose key is a word of the index into `found`, at the word's position. Keys compare
/// by canonical equivalence, as everywhere.
void findMembers(const JSONObject& object, const WordIndex& index, const JSONValue** found);

}  // namespace ormel::coding
