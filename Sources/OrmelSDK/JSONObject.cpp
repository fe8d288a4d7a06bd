#include <algorithm>
#include <bit>
#include <memory>
#include <string>
#include <vector>

#include "OrmelSDK/CanonicalText.h"
#include "OrmelSDK/JSONStorage.h"

namespace ormel {

namespace detail {

namespace {

std::uint64_t wordAt(const char* at) noexcept {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

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
std::vector<SortKey> sortedKeys(const JSONStoredMember* members, std::uint32_t count, bool plainASCII,
                                std::vector<std::string>& forms) {
  if (!plainASCII) forms.reserve(count);
  std::vector<SortKey> keys;
  keys.reserve(count);
  for (std::uint32_t position = 0; position < count; ++position) {
    std::string_view key = storedText(members[position].key);
    if (!plainASCII && !isASCII(key)) key = forms.emplace_back(canonicalForm(key));
    keys.push_back({orderedPrefix(key), key, position});
  }
  std::sort(keys.begin(), keys.end(), precedes);
  return keys;
}

// Of each run of equal keys the last value moves to the first one's place; the others fall away.
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
}

void buildIndex(JSONContainerHeader* header, const std::vector<SortKey>& keys) {
  auto* index = reinterpret_cast<std::uint32_t*>(membersOf(header) + header->count);
  for (const auto& key : keys) *index++ = key.position;
  header->flags |= JSONContainerHeader::hasIndex;
}

const JSONValue* findInIndex(const JSONStoredMember* members, std::uint32_t count, std::string_view key) {
  const auto* index = reinterpret_cast<const std::uint32_t*>(members + count);
  const auto* found = std::partition_point(index, index + count, [&](std::uint32_t position) {
    return compareCanonically(storedText(members[position].key), key) < 0;
  });
  if (found == index + count || !canonicallyEquivalent(storedText(members[*found].key), key)) return nullptr;
  return &members[*found].value;
}

}  // namespace

void JSONKeyWatch::add(const std::byte* storedKey) noexcept {
  const std::string_view key = storedText(storedKey);
  const char* text = key.data();
  std::uint64_t head = wordAt(text);
  std::uint64_t tail = 0;
  if (key.size() >= sizeof head) {
    tail = wordAt(text + key.size() - sizeof tail);
    for (std::size_t at = sizeof head; at + sizeof head < key.size(); at += sizeof head) bytes_ |= wordAt(text + at);
  } else {
    head = std::endian::native == std::endian::little ? head & ((std::uint64_t{1} << 8 * key.size()) - 1)
                                                      : head & ~(~std::uint64_t{0} >> 8 * key.size());
  }
  bytes_ |= head | tail;
  const std::uint64_t mixed = (head ^ std::rotl(tail, 23) ^ key.size()) * 0x9E3779B97F4A7C15u;
  const std::uint64_t bit = std::uint64_t{1} << (mixed >> 58);
  mayHaveDuplicate_ |= (seen_ & bit) != 0;
  seen_ |= bit;
}

void finishObject(JSONContainerHeader* header, const JSONKeyWatch& watch) {
  if (watch.hasNonASCIIKey()) header->flags |= JSONContainerHeader::hasNonASCIIKey;
  const bool wantsIndex = header->count > indexThreshold;
  if (!wantsIndex && !watch.hasNonASCIIKey()) {
    if (!watch.mayHaveDuplicate()) return;
    const auto* members = membersOf(header);
    bool duplicate = false;
    for (std::uint32_t later = 1; later < header->count && !duplicate; ++later) {
      for (std::uint32_t earlier = 0; earlier < later && !duplicate; ++earlier) {
        duplicate = storedText(members[earlier].key) == storedText(members[later].key);
      }
    }
    if (!duplicate) return;
  }
  std::vector<std::string> forms;
  auto keys = sortedKeys(membersOf(header), header->count, !watch.hasNonASCIIKey(), forms);
  const auto same = [](const SortKey& left, const SortKey& right) { return left.text == right.text; };
  if (std::adjacent_find(keys.begin(), keys.end(), same) != keys.end()) {
    dropDuplicates(header, keys);
    forms.clear();
    keys = sortedKeys(membersOf(header), header->count, !watch.hasNonASCIIKey(), forms);
  }
  if (header->count > indexThreshold) buildIndex(header, keys);
}

}  // namespace detail

const JSONValue* JSONObject::find(std::string_view key) const noexcept {
  if (flags_ & detail::JSONContainerHeader::hasIndex) return detail::findInIndex(members_, size_, key);
  const auto* end = members_ + size_;
  for (const auto* member = members_; member != end; ++member) {
    if (detail::storedText(member->key) == key) return &member->value;
  }
  if (!(flags_ & detail::JSONContainerHeader::hasNonASCIIKey) && detail::isASCII(key)) return nullptr;
  for (const auto* member = members_; member != end; ++member) {
    if (detail::canonicallyEquivalent(detail::storedText(member->key), key)) return &member->value;
  }
  return nullptr;
}

}  // namespace ormel
