#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/Text/CanonicalText.h"

namespace ormel {

namespace detail {

namespace {

// The first eight bytes of a text, big-endian so that the order of numbers is the order of bytes.
std::uint64_t orderedPrefix(std::string_view text) noexcept {
  std::uint64_t prefix = 0;
  for (std::size_t at = 0; at < sizeof prefix; ++at) {
    prefix = prefix << 8 | (at < text.size() ? static_cast<unsigned char>(text[at]) : 0u);
  }
  return prefix;
}

struct SortKey {
  std::uint64_t prefix;
  std::string_view text;
  std::uint32_t position;
};

bool precedes(const SortKey& left, const SortKey& right) noexcept {
  if (left.prefix != right.prefix) return left.prefix < right.prefix;
  const int order = left.text.compare(right.text);
  return order != 0 ? order < 0 : left.position < right.position;
}

// The members' keys in their canonical form, sorted. `forms` keeps the texts that differ from the stored ones.
std::vector<SortKey> sortedKeys(const JSONStoredMember* members, std::uint32_t count, const JSONTextPlace& texts,
                                bool plainASCII, std::vector<std::string>& forms) {
  if (!plainASCII) forms.reserve(count);
  std::vector<SortKey> keys;
  keys.reserve(count);
  for (std::uint32_t position = 0; position < count; ++position) {
    std::string_view key = texts.text(members[position].key);
    if (!plainASCII && !isASCII(key)) key = forms.emplace_back(canonicalForm(key));
    keys.push_back({orderedPrefix(key), key, position});
  }
  std::sort(keys.begin(), keys.end(), precedes);
  return keys;
}

[[gnu::noinline]] bool occursBefore(std::string_view key, const JSONStoredMember* begin, const JSONStoredMember* end,
                                    const JSONTextPlace& texts) noexcept {
  return std::any_of(begin, end, [&](const auto& member) { return texts.text(member.key) == key; });
}

struct KeySurvey {
  bool nonASCII;
  bool duplicate;
};

// One cheap pass that rules out duplicates in almost every object: keys are hashed into two sets of 64 bits, and only a
// key whose bit is taken in both is compared with the keys before it. Beyond the index threshold the sort for the index
// finds duplicates anyway.
KeySurvey surveyKeys(const JSONStoredMember* members, std::uint32_t count, const JSONTextPlace& texts) noexcept {
  const bool isSmall = count <= indexThreshold;
  std::uint64_t seen = 0;
  std::uint64_t seenToo = 0;
  std::uint64_t bytes = 0;
  bool duplicate = false;
  for (const auto* member = members; member != members + count; ++member) {
    const std::string_view key = texts.text(member->key);
    std::uint64_t head = wordAt(key.data());
    std::uint64_t tail = 0;
    if (key.size() < sizeof head) {
      head &= firstBytes(key.size());
    } else {
      tail = wordAt(key.data() + key.size() - sizeof tail);
      for (std::size_t at = sizeof head; at + sizeof head < key.size(); at += sizeof head) bytes |= wordAt(&key[at]);
    }
    bytes |= head | tail;
    const std::uint64_t mixed = (head ^ std::rotl(tail, 23) ^ key.size()) * 0x9E3779B97F4A7C15u;
    const std::uint64_t bit = std::uint64_t{1} << (mixed >> 58);
    const std::uint64_t bitToo = std::uint64_t{1} << (mixed >> 52 & 63);
    if (seen & bit && seenToo & bitToo && isSmall) [[unlikely]]
      duplicate = duplicate || occursBefore(key, members, member, texts);
    seen |= bit;
    seenToo |= bitToo;
  }
  return {(bytes & 0x8080808080808080u) != 0, duplicate};
}

// For each run of equal keys, the last value moves to the position of the first; the others are dropped.
void dropDuplicates(JSONContainerHeader* header, const std::vector<SortKey>& keys) {
  auto* members = membersOf(header);
  std::vector<bool> dropped(header->count, false);
  for (std::size_t first = 0; first < keys.size();) {
    std::size_t end = first + 1;
    while (end < keys.size() && keys[end].text == keys[first].text) dropped[keys[end++].position] = true;
    if (end > first + 1) members[keys[first].position].value.swap(members[keys[end - 1].position].value);
    first = end;
  }
  std::uint32_t kept = 0;
  for (std::uint32_t position = 0; position < header->count; ++position) {
    if (dropped[position]) continue;
    if (kept != position) {
      members[kept].key = members[position].key;
      members[kept].value.swap(members[position].value);
    }
    ++kept;
  }
  header->count = kept;
  header->height = static_cast<std::uint16_t>(tallestValue(*header) + 1);
}

void buildIndex(JSONContainerHeader* header, const std::vector<SortKey>& keys) {
  auto* index = reinterpret_cast<std::uint32_t*>(membersOf(header) + header->count);
  for (const auto& key : keys) *index++ = key.position;
  header->flags |= JSONContainerHeader::hasIndex;
}

[[gnu::noinline]] void settleKeys(JSONContainerHeader* header, const JSONTextPlace& texts, bool plainASCII,
                                  JSONElements elements) {
  std::vector<std::string> forms;
  auto keys = sortedKeys(membersOf(header), header->count, texts, plainASCII, forms);
  const auto same = [](const SortKey& left, const SortKey& right) { return left.text == right.text; };
  if (std::adjacent_find(keys.begin(), keys.end(), same) != keys.end()) {
    auto* const end = membersOf(header) + header->count;
    dropDuplicates(header, keys);
    // Must precede the index, which overwrites the storage of the dropped members.
    if (elements == JSONElements::counted) std::destroy(membersOf(header) + header->count, end);
    forms.clear();
    keys = sortedKeys(membersOf(header), header->count, texts, plainASCII, forms);
  }
  if (header->count > indexThreshold) buildIndex(header, keys);
}

// Not inlined, like the search for an equivalent key, to keep the hot path of `find` short.
[[gnu::noinline]] const JSONValue* findInIndex(const JSONStoredMember* members, std::uint32_t count,
                                               std::string_view key) {
  const auto* index = reinterpret_cast<const std::uint32_t*>(members + count);
  const auto* found = std::partition_point(index, index + count, [&](std::uint32_t position) {
    return compareCanonically(storedText(members[position].key), key) < 0;
  });
  if (found == index + count || !canonicallyEquivalent(storedText(members[*found].key), key)) return nullptr;
  return &members[*found].value;
}

[[gnu::noinline]] const JSONValue* findEquivalent(const JSONStoredMember* begin, const JSONStoredMember* end,
                                                  std::string_view key) {
  for (const auto* member = begin; member != end; ++member) {
    if (canonicallyEquivalent(storedText(member->key), key)) return &member->value;
  }
  return nullptr;
}

}  // namespace

std::size_t tallestValue(const JSONContainerHeader& object) noexcept {
  const auto* const members = reinterpret_cast<const JSONStoredMember*>(&object + 1);
  std::size_t tallest = 0;
  for (const auto* member = members; member != members + object.count; ++member) {
    tallest = std::max(tallest, JSONAccess::height(member->value));
  }
  return tallest;
}

void finishObject(JSONContainerHeader* header, const JSONTextPlace& texts, JSONElements elements) {
  const KeySurvey survey = surveyKeys(membersOf(header), header->count, texts);
  if (survey.nonASCII) header->flags |= JSONContainerHeader::hasNonASCIIKey;
  if (survey.duplicate || survey.nonASCII || header->count > indexThreshold)
    settleKeys(header, texts, !survey.nonASCII, elements);
}

namespace {

/// A key with its first bytes loaded as one word: a single comparison rules out most other keys.
class SoughtKey {
 public:
  explicit SoughtKey(std::string_view key) noexcept : key_(key), mask_(maskFor(key.size())), head_(headOf(key)) {}

  /// Whether a stored text has the same bytes.
  bool is(std::string_view stored) const noexcept {
    if (stored.size() != key_.size() || (wordAt(stored.data()) & mask_) != head_) return false;
    return key_.size() <= sizeof head_ ||
           std::memcmp(stored.data() + sizeof head_, key_.data() + sizeof head_, key_.size() - sizeof head_) == 0;
  }

 private:
  static std::uint64_t maskFor(std::size_t size) noexcept {
    return size < sizeof(std::uint64_t) ? firstBytes(size) : ~std::uint64_t{0};
  }

  static std::uint64_t headOf(std::string_view key) noexcept {
    if (key.size() >= sizeof(std::uint64_t)) return wordAt(key.data());
    // The two halves may overlap, with equal bytes in the overlap.
    if (key.size() >= sizeof(std::uint32_t)) {
      return partAt<std::uint32_t>(key, 0) | partAt<std::uint32_t>(key, key.size() - sizeof(std::uint32_t));
    }
    std::uint64_t head = 0;
    for (std::size_t at = 0; at < key.size(); ++at) head |= partAt<std::uint8_t>(key, at);
    return head;
  }

  /// The bytes at this offset of the key, shifted to their position in its first word.
  template <typename Part>
  static std::uint64_t partAt(std::string_view key, std::size_t at) noexcept {
    Part part;
    std::memcpy(&part, key.data() + at, sizeof part);
    const bool isLittle = std::endian::native == std::endian::little;
    return std::uint64_t{part} << 8 * (isLittle ? at : sizeof(std::uint64_t) - sizeof part - at);
  }

  std::string_view key_;
  std::uint64_t mask_;
  std::uint64_t head_;
};

}  // namespace

}  // namespace detail

const JSONValue* JSONObject::find(std::string_view key) const noexcept {
  const auto* const begin = members();
  const auto* const end = begin + header_.count;
  if (header_.flags & detail::JSONContainerHeader::hasIndex) return detail::findInIndex(begin, header_.count, key);
  const detail::SoughtKey sought(key);
  for (const auto* member = begin; member != end; ++member) {
    if (sought.is(detail::storedText(member->key))) return &member->value;
  }
  if (!(header_.flags & detail::JSONContainerHeader::hasNonASCIIKey) && detail::isASCII(key)) return nullptr;
  return detail::findEquivalent(begin, end, key);
}

}  // namespace ormel
