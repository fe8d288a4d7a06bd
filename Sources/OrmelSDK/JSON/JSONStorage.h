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
// A container is a JSONArray or JSONObject, which holds a JSONContainerHeader, then its elements, and, for an object
// beyond `indexThreshold` members, the member positions in the order of their keys.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

struct JSONStorageBlock : JSONBlock {
  enum class Contents : std::uint8_t { text, container, message };

  Contents contents = Contents::text;
  /// Bytes of everything behind this header, texts that were taken over included.
  std::size_t size = 0;
  /// Texts taken over whole from the parser instead of copied; null otherwise.
  std::byte* adoptedTexts = nullptr;

  std::byte* payload() noexcept { return reinterpret_cast<std::byte*>(this + 1); }

  static JSONStorageBlock* allocate(std::size_t payloadSize, Contents contents) {
    auto* memory = ::operator new(sizeof(JSONStorageBlock) + payloadSize);
    auto* block = new (memory) JSONStorageBlock;
    block->contents = contents;
    block->size = payloadSize;
    return block;
  }
};

struct JSONBlockRelease {
  void operator()(const JSONBlock* block) const noexcept { releaseJSONBlock(block); }
};

/// Owns a block until a value does.
using JSONBlockPointer = std::unique_ptr<JSONStorageBlock, JSONBlockRelease>;

/// Up to this many members a scan of the keys beats a search in an index.
inline constexpr std::size_t indexThreshold = 32;

inline constexpr std::size_t textOverhead = sizeof(std::uint32_t) + 1;

/// Texts are compared in words of this size, which may reach beyond a short text: all storage of texts therefore ends
/// in this many bytes of slack.
inline constexpr std::size_t textSlack = sizeof(std::uint64_t);

/// Stores a text, of which `textOverhead` bytes are more than its own, and returns the place behind it.
/// @throws std::length_error if its size does not fit into 32 bits
std::byte* storeText(std::byte* place, std::string_view text);

inline std::uint64_t wordAt(const char* at) noexcept {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

/// A mask for the first `count` bytes of a word in memory, below eight.
constexpr std::uint64_t firstBytes(std::size_t count) noexcept {
  return std::endian::native == std::endian::little ? (std::uint64_t{1} << 8 * count) - 1
                                                    : ~(~std::uint64_t{0} >> 8 * count);
}

static_assert(sizeof(JSONArray) == 8 && sizeof(JSONObject) == 8);
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

/// Where the texts of a block will be, and where they can be read while it is being built. Pass by reference: a copy
/// defeats store forwarding, which costs more than building a small object.
struct JSONTextPlace {
  const std::byte* stored;
  const std::byte* readable;

  std::string_view text(const std::byte* storedText) const noexcept {
    return detail::storedText(readable + (storedText - stored));
  }
};

/// Whether the elements of a container hold references of their own.
enum class JSONElements : bool { uncounted, counted };

/// The height of the tallest container among an object's values; 0 when there is none.
std::size_t tallestValue(const JSONContainerHeader& object) noexcept;

/// Makes the keys of a filled object unique (the last value wins) and builds its index if it needs one. Dropped members
/// are destroyed if they are counted, and no longer contribute to the object's height.
void finishObject(JSONContainerHeader* header, const JSONTextPlace& texts, JSONElements elements);

/// Gives the storage access to the private members of `JSONValue`, and nothing else does.
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

  /// Constructs a container at `place`; the caller fills in the elements behind it.
  static JSONContainerHeader* beginContainer(void* place, JSONContainerHeader header) noexcept {
    if (header.isObject) return &(new (place) JSONObject(header))->header_;
    return &(new (place) JSONArray(header))->header_;
  }

  static const JSONContainerHeader& header(const JSONValue& value) noexcept {
    return value.kind() == JSONValue::Kind::object ? object(value).header_ : array(value).header_;
  }

  static std::size_t height(const JSONValue& value) noexcept { return isContainer(value) ? header(value).height : 0; }

  static const JSONObject& object(const JSONValue& value) noexcept {
    return *reinterpret_cast<const JSONObject*>(value.payload_.data);
  }

  static const JSONArray& array(const JSONValue& value) noexcept {
    return *reinterpret_cast<const JSONArray*>(value.payload_.data);
  }

  static const JSONStoredMember* members(const JSONObject& object) noexcept { return object.members(); }

  /// The positions of a large object's members in the canonical order of their keys; null for a small object.
  static const std::uint32_t* index(const JSONObject& object) noexcept {
    if ((object.header_.flags & JSONContainerHeader::hasIndex) == 0) return nullptr;
    return reinterpret_cast<const std::uint32_t*>(object.members() + object.header_.count);
  }

  static bool hasNonASCIIKey(const JSONObject& object) noexcept {
    return (object.header_.flags & JSONContainerHeader::hasNonASCIIKey) != 0;
  }
};

}  // namespace ormel::detail
