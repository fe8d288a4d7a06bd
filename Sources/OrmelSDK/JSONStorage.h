#pragma once

// How JSON values lie in memory.
//
// A block is one allocation with a reference count. Three kinds exist:
//   text       one text
//   container  one array or object built in code; its elements hold references to their own blocks
//   message    everything decoded from one text: all containers, then all texts. Its elements point back into the
//              block without counting themselves, so a message is freed in one step and built without atomics
//
// A text is a 32-bit byte count, the bytes, and a zero byte: exactly what simdjson leaves in its string buffer, so
// that the texts of a message arrive by a single copy. It has no alignment.
//
// A container is a JSONContainerHeader, its elements, and, for an object beyond `indexThreshold` members, the
// member positions in the order of their keys.

#include <cstddef>
#include <cstdint>
#include <new>

#include "OrmelSDK/JSONValue.h"

namespace ormel::detail {

struct JSONStorageBlock : JSONBlock {
  enum class Contents : std::uint8_t { text, container, message };

  Contents contents = Contents::text;
  /// Texts taken over whole from the parser instead of copied; null otherwise.
  std::byte* adoptedTexts = nullptr;

  std::byte* payload() noexcept { return reinterpret_cast<std::byte*>(this + 1); }

  static JSONStorageBlock* allocate(std::size_t payloadSize, Contents contents) {
    auto* memory = ::operator new(sizeof(JSONStorageBlock) + payloadSize);
    auto* block = new (memory) JSONStorageBlock;
    block->contents = contents;
    return block;
  }
};

struct JSONContainerHeader {
  static constexpr std::uint8_t hasNonASCIIKey = 1;
  static constexpr std::uint8_t hasIndex = 2;

  std::uint32_t count = 0;
  /// Levels of containers from here down: 1 when no element is a container.
  std::uint16_t height = 1;
  std::uint8_t flags = 0;
  bool isObject = false;
};

/// Up to this many members a scan of the keys beats a search in an index.
inline constexpr std::size_t indexThreshold = 32;

inline constexpr std::size_t textOverhead = sizeof(std::uint32_t) + 1;

/// Keys are examined in words of this size; storage that holds keys ends in as many bytes of slack.
inline constexpr std::size_t keySlack = sizeof(std::uint64_t);

static_assert(sizeof(JSONValue) == 16 && sizeof(JSONStoredMember) == 24 && sizeof(JSONContainerHeader) == 8);
static_assert(alignof(JSONStorageBlock) >= 8, "the low three bits of a block's address carry the kind");

constexpr std::size_t containerSize(std::size_t count, bool isObject) noexcept {
  const std::size_t elements = count * (isObject ? sizeof(JSONStoredMember) : sizeof(JSONValue));
  const std::size_t index = isObject && count > indexThreshold ? (count * sizeof(std::uint32_t) + 7) / 8 * 8 : 0;
  return sizeof(JSONContainerHeader) + elements + index;
}

inline JSONStoredMember* membersOf(JSONContainerHeader* header) noexcept {
  return reinterpret_cast<JSONStoredMember*>(header + 1);
}

inline JSONValue* elementsOf(JSONContainerHeader* header) noexcept { return reinterpret_cast<JSONValue*>(header + 1); }

inline const JSONContainerHeader* headerOf(const JSONStoredMember* members) noexcept {
  return reinterpret_cast<const JSONContainerHeader*>(members) - 1;
}

/// Gathers the facts about an object's keys that decide how much work `finishObject` has. Starts as
/// `JSONKeyWatch{}`; plain default initialisation is left trivial for the sake of arrays of them.
class JSONKeyWatch {
 public:
  /// Takes a stored key, behind whose start at least `keySlack` bytes can be read.
  void add(const std::byte* storedKey) noexcept;
  bool mayHaveDuplicate() const noexcept { return mayHaveDuplicate_; }
  bool hasNonASCIIKey() const noexcept { return (bytes_ & 0x8080808080808080u) != 0; }

 private:
  std::uint64_t seen_;
  std::uint64_t bytes_;
  bool mayHaveDuplicate_;
};

/// Makes the keys of a filled object unique (the last value stands) and builds its index if it needs one. Members
/// that fall away are left, alive, behind the ones that count.
void finishObject(JSONContainerHeader* header, const JSONKeyWatch& keys);

/// The only door from the storage to the value's private parts.
struct JSONAccess {
  static JSONValue make(std::uint64_t bits, const JSONBlock* owner, JSONValue::Kind kind) noexcept {
    return JSONValue(JSONValue::Payload{.bits = bits},
                     reinterpret_cast<std::uintptr_t>(owner) | static_cast<std::uintptr_t>(kind));
  }

  static JSONValue make(const void* data, const JSONBlock* owner, JSONValue::Kind kind) noexcept {
    return JSONValue(JSONValue::Payload{.data = static_cast<const std::byte*>(data)},
                     reinterpret_cast<std::uintptr_t>(owner) | static_cast<std::uintptr_t>(kind));
  }

  /// Adds a reference for a handle that leaves its block.
  static void retain(const JSONValue& value) noexcept { value.retain(); }

  static bool isContainer(const JSONValue& value) noexcept {
    return value.kind() == JSONValue::Kind::object || value.kind() == JSONValue::Kind::array;
  }

  static const std::byte* data(const JSONValue& value) noexcept { return value.payload_.data; }
  static const JSONBlock* owner(const JSONValue& value) noexcept { return value.owner(); }

  static const JSONContainerHeader& header(const JSONValue& value) noexcept {
    return *reinterpret_cast<const JSONContainerHeader*>(value.payload_.data);
  }

  static std::size_t height(const JSONValue& value) noexcept { return isContainer(value) ? header(value).height : 0; }

  static JSONObject object(const JSONValue& value) noexcept {
    const auto& head = header(value);
    return JSONObject(reinterpret_cast<const JSONStoredMember*>(&head + 1), head.count, head.flags);
  }

  static JSONArray array(const JSONValue& value) noexcept {
    const auto& head = header(value);
    return JSONArray(reinterpret_cast<const JSONValue*>(&head + 1), head.count);
  }

  static const JSONStoredMember* members(JSONObject object) noexcept { return object.members_; }
  static std::uint8_t flags(JSONObject object) noexcept { return object.flags_; }
};

}  // namespace ormel::detail
