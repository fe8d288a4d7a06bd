#pragma once

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iosfwd>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel {

class JSONArray;
class JSONObject;
struct JSONMemberInit;

namespace detail {

/// The shared storage behind one or more values; see JSONStorage.h for its layouts.
struct JSONBlock {
  mutable std::atomic<std::size_t> references{1};

  /// Drops a reference and returns whether it was the last one. No other thread can race for the only reference, so
  /// most blocks are freed without an atomic write, which would wait for all earlier writes.
  bool losesLastReference() const noexcept {
    return references.load(std::memory_order_acquire) == 1 || references.fetch_sub(1, std::memory_order_acq_rel) == 1;
  }
};

/// Destroys a block whose last reference is gone.
void releaseJSONBlock(const JSONBlock* block) noexcept;

struct JSONAccess;

}  // namespace detail

/// An immutable JSON value.
///
/// A value is a handle of 16 bytes: copying one, or a part of one, takes constant time and copies no text,
/// whatever its size. All parts of a decoded message share one block of memory, which lives until the last
/// handle into it is gone; `detached()` copies out a small part that is to outlive a large message.
///
/// Numbers are IEEE doubles and nothing else: an integer of the text keeps its exact value up to 2^53 and takes
/// the nearest double beyond. All text inside a value is valid UTF-8.
///
/// *Thread safety*: distinct handles may be used from any threads at the same time, also when they share storage. One
/// handle may be read by many threads, but not while another assigns to it, moves from it or destroys it.
/// *Errors*: reading a value never fails, but for the fatal case of `intValue`. Building, decoding, comparing and
/// encoding may run out of memory (`std::bad_alloc`); what else they fail with is said at each.
/// *Object lifetimes*: views, containers and references that an accessor returns are valid while any handle to
/// the value that they came from (or to the value that contains it) exists. The accessors that hand out views
/// cannot be called on a temporary, which would leave them dangling at once.
class JSONValue {
 public:
  /// The six cases of a value, numbered in this order.
  enum class Kind : unsigned char { string, number, bool_, object, array, null };

  /// The deepest nesting of arrays and objects that `decode` reads.
  static constexpr std::size_t maximumDecodingDepth = 512;

  /// The deepest nesting that a value built in code may reach; larger than what can be read, so that any decoded
  /// value fits into an envelope of one's own.
  static constexpr std::size_t maximumDepth = 1024;

  /// Constructs `null`.
  JSONValue() noexcept : payload_{.bits = 0}, ownerAndKind_(static_cast<std::uintptr_t>(Kind::null)) {}
  JSONValue(std::nullptr_t) noexcept : JSONValue() {}

  template <std::same_as<bool> Bool>
  JSONValue(Bool value) noexcept
      : payload_{.bits = value ? 1u : 0u}, ownerAndKind_(static_cast<std::uintptr_t>(Kind::bool_)) {}

  template <std::floating_point Number>
  JSONValue(Number value) noexcept
      : payload_{.number = static_cast<double>(value)}, ownerAndKind_(static_cast<std::uintptr_t>(Kind::number)) {}

  /// Constructs a `number`; an integer beyond 2^53 takes the nearest double.
  template <std::integral Number>
    requires(!std::same_as<Number, bool> && !std::same_as<Number, char>)
  JSONValue(Number value) noexcept : JSONValue(static_cast<double>(value)) {}

  /// Constructs a `string`, a copy of `text`. Invalid UTF-8 is repaired with replacement characters. Fails with
  /// `std::length_error` for a text of 4 GiB or more.
  JSONValue(std::string_view text);
  JSONValue(const std::string& text) : JSONValue(std::string_view(text)) {}
  JSONValue(const char* text) : JSONValue(std::string_view(text)) {}
  JSONValue(const SharedText& text) : JSONValue(text.view()) {}

  /// Constructs an `object`. A key that occurs twice takes its last value. Fails with `EncodingError` if the
  /// result would be nested deeper than `maximumDepth`.
  static JSONValue object(std::initializer_list<JSONMemberInit> members = {});
  static JSONValue object(std::span<const JSONMemberInit> members);

  /// Constructs an `array`. Fails with `EncodingError` if the result would be nested deeper than `maximumDepth`.
  static JSONValue array(std::initializer_list<JSONValue> elements = {});
  static JSONValue array(std::span<const JSONValue> elements);

  JSONValue(const JSONValue& other) noexcept : payload_(other.payload_), ownerAndKind_(other.ownerAndKind_) {
    retain();
  }
  JSONValue(JSONValue&& other) noexcept : payload_(other.payload_), ownerAndKind_(other.ownerAndKind_) {
    other.becomeNull();
  }
  JSONValue& operator=(const JSONValue& other) noexcept {
    JSONValue copy(other);
    swap(copy);
    return *this;
  }
  JSONValue& operator=(JSONValue&& other) noexcept {
    JSONValue taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~JSONValue() { release(); }

  void swap(JSONValue& other) noexcept {
    std::swap(payload_, other.payload_);
    std::swap(ownerAndKind_, other.ownerAndKind_);
  }

  /// Reads one JSON text. Any value is accepted at the top level. If a key occurs twice in an object, the
  /// last value wins.
  ///
  /// `text` is UTF-8 and is not needed any more when the call returns. Linear in time for any text, and without
  /// recursion. Each thread keeps working memory for texts of up to 2 MiB.
  ///
  /// Fails with `DecodingError` of kind `dataCorrupted`: with the debug description "Unsupported JSON value" for
  /// a number outside the range of a double, otherwise with a `JSONSyntaxError` as its underlying error (not
  /// JSON, invalid UTF-8, a lone surrogate, or nested deeper than `maximumDecodingDepth`).
  static JSONValue decode(std::string_view text);

  /// Writes the value as compact JSON: no white space, no raw line feed, whole numbers without a fraction. The
  /// order of an object's keys is unspecified. Numbers take the shortest text that reads back as the same double.
  /// Decoding the text gives an equal value. Fails with `EncodingError` if a number is not finite, which no decoded
  /// value holds.
  std::string encode() const;

  Kind kind() const noexcept { return static_cast<Kind>(ownerAndKind_ & kindMask); }
  bool isNull() const noexcept { return kind() == Kind::null; }

  /// The members of an `object`, else null.
  const JSONObject* objectValue() const& noexcept;
  const JSONObject* objectValue() && = delete;

  /// The elements of an `array`, else null.
  const JSONArray* arrayValue() const& noexcept;
  const JSONArray* arrayValue() && = delete;

  /// The text of a `string`, else empty. No other case is converted.
  std::optional<std::string_view> stringValue() const& noexcept;
  std::optional<std::string_view> stringValue() && = delete;

  /// The payload of a `bool`, else empty.
  std::optional<bool> boolValue() const noexcept {
    if (kind() != Kind::bool_) return std::nullopt;
    return payload_.bits != 0;
  }

  /// The payload of a `number`, else empty.
  std::optional<double> numberValue() const noexcept {
    if (kind() != Kind::number) return std::nullopt;
    return payload_.number;
  }

  /// A `number` with no fraction as an integer, else empty. A whole number outside the signed 64-bit range, or an
  /// infinity, ends the process: no honest integer exists, and callers hold no guard.
  std::optional<std::int64_t> intValue() const noexcept;

  /// The value under `key` if this is an `object` that has it, else null; see `JSONObject::find`.
  const JSONValue* find(std::string_view key) const& noexcept;
  const JSONValue* find(std::string_view key) && = delete;

  /// `value["a"]["b"]`, `value["list"][0]`: the part under a key of an `object`, or at an index of an `array`; JSON
  /// null for a part that is not there, also because this is no object or array. `find` tells such a part from one that
  /// is null. A temporary gives a value of its own.
  const JSONValue& operator[](std::string_view key) const& noexcept;
  JSONValue operator[](std::string_view key) && noexcept { return std::as_const(*this)[key]; }
  template <std::integral Index>
    requires(!std::same_as<Index, bool>)
  const JSONValue& operator[](Index index) const& noexcept {
    return element(static_cast<std::size_t>(index));
  }
  template <std::integral Index>
    requires(!std::same_as<Index, bool>)
  JSONValue operator[](Index index) && noexcept {
    return element(static_cast<std::size_t>(index));
  }

  /// A `number` that is a whole one and fits, else empty: one with a fraction, or outside the signed 64-bit range, is
  /// not there. It never ends the process, unlike `intValue`, and so is the one for values of unknown origin.
  std::optional<std::int64_t> integerValue() const noexcept;

  /// The payload if this is of the case asked for, else the fallback: `answer["city"].textOr("nowhere")`. No other case
  /// is converted. `integerOr` is to `integerValue` as the others are to theirs.
  std::string textOr(std::string_view fallback) const { return std::string(stringValue().value_or(fallback)); }
  double numberOr(double fallback) const noexcept { return numberValue().value_or(fallback); }
  std::int64_t integerOr(std::int64_t fallback) const noexcept { return integerValue().value_or(fallback); }
  bool booleanOr(bool fallback) const noexcept { return boolValue().value_or(fallback); }

  /// An equal value that owns exactly the memory that it needs, and shares none with the message it came from. Takes
  /// time in proportion to the value's size.
  JSONValue detached() const;

  /// Cases must match. Texts and keys compare by Unicode canonical equivalence, numbers as doubles, objects
  /// regardless of key order; a number that is not a number equals nothing, itself included.
  friend bool operator==(const JSONValue& left, const JSONValue& right);

  /// Writes the JSON text, for logs and test failures; a number that is not finite is written as its C name.
  friend std::ostream& operator<<(std::ostream& stream, const JSONValue& value);

 private:
  friend struct detail::JSONAccess;

  union Payload {
    std::uint64_t bits;
    double number;
    const std::byte* data;
  };

  static constexpr std::uintptr_t kindMask = 7;

  JSONValue(Payload payload, std::uintptr_t ownerAndKind) noexcept : payload_(payload), ownerAndKind_(ownerAndKind) {}

  const detail::JSONBlock* owner() const noexcept {
    return reinterpret_cast<const detail::JSONBlock*>(ownerAndKind_ & ~kindMask);
  }

  void retain() const noexcept {
    if (const auto* block = owner()) block->references.fetch_add(1, std::memory_order_relaxed);
  }

  void release() noexcept {
    const auto* block = owner();
    if (block && block->losesLastReference()) detail::releaseJSONBlock(block);
  }

  const JSONValue& element(std::size_t index) const noexcept;

  void becomeNull() noexcept {
    payload_.bits = 0;
    ownerAndKind_ = static_cast<std::uintptr_t>(Kind::null);
  }

  Payload payload_;
  std::uintptr_t ownerAndKind_;
};

/// One key and value to build an object from. Invalid UTF-8 in the key is repaired when the object is built.
struct JSONMemberInit {
  JSONMemberInit(std::string_view memberKey, JSONValue memberValue) : key(memberKey), value(std::move(memberValue)) {}

  /// Must stay valid until the object is built.
  std::string_view key;
  JSONValue value;
};

/// One key and value of an object, as met when iterating; valid as long as the object.
struct JSONMember {
  std::string_view key;
  const JSONValue& value;
};

namespace detail {

/// The header in front of a container's elements in memory.
struct JSONContainerHeader {
  static constexpr std::uint8_t hasNonASCIIKey = 1;
  static constexpr std::uint8_t hasIndex = 2;

  std::uint32_t count = 0;
  /// Levels of containers from here down: 1 when no element is a container.
  std::uint16_t height = 1;
  std::uint8_t flags = 0;
  bool isObject = false;
};

/// A key (a 32-bit byte count followed by the text) and its value, as stored.
struct JSONStoredMember {
  const std::byte* key;
  JSONValue value;
};

inline std::string_view storedText(const std::byte* text) noexcept {
  std::uint32_t size;
  std::memcpy(&size, text, sizeof size);
  return {reinterpret_cast<const char*>(text + sizeof size), size};
}

}  // namespace detail

inline std::optional<std::string_view> JSONValue::stringValue() const& noexcept {
  if (kind() != Kind::string) return std::nullopt;
  return detail::storedText(payload_.data);
}

/// The elements of an array, in their order.
///
/// It lies in the storage of its value and cannot be copied; it is valid as long as a handle to that value exists.
/// It never changes and may be read from any threads.
class JSONArray {
 public:
  using value_type = JSONValue;
  using const_iterator = const JSONValue*;

  JSONArray(const JSONArray&) = delete;
  JSONArray& operator=(const JSONArray&) = delete;

  std::size_t size() const noexcept { return header_.count; }
  bool empty() const noexcept { return size() == 0; }
  const JSONValue* begin() const noexcept { return reinterpret_cast<const JSONValue*>(this + 1); }
  const JSONValue* end() const noexcept { return begin() + size(); }

  /// The element at `index`, which must be below `size()`.
  const JSONValue& operator[](std::size_t index) const noexcept { return begin()[index]; }
  /// The first and the last element; there must be one.
  const JSONValue& front() const noexcept { return begin()[0]; }
  const JSONValue& back() const noexcept { return begin()[size() - 1]; }

 private:
  friend struct detail::JSONAccess;

  explicit JSONArray(detail::JSONContainerHeader header) noexcept : header_(header) {}

  detail::JSONContainerHeader header_;
};

/// The members of an object. Keys are unique. Iteration gives each member once, in an order that means nothing.
///
/// It lies in the storage of its value and cannot be copied; it is valid as long as a handle to that value exists.
/// It never changes and may be read from any threads.
class JSONObject {
 public:
  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = JSONMember;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = JSONMember;

    const_iterator() noexcept = default;
    JSONMember operator*() const noexcept { return {detail::storedText(member_->key), member_->value}; }
    const_iterator& operator++() noexcept {
      ++member_;
      return *this;
    }
    const_iterator operator++(int) noexcept {
      const_iterator before = *this;
      ++member_;
      return before;
    }
    friend bool operator==(const_iterator left, const_iterator right) noexcept = default;

   private:
    friend class JSONObject;
    explicit const_iterator(const detail::JSONStoredMember* member) noexcept : member_(member) {}
    const detail::JSONStoredMember* member_ = nullptr;
  };
  using value_type = JSONMember;

  JSONObject(const JSONObject&) = delete;
  JSONObject& operator=(const JSONObject&) = delete;

  std::size_t size() const noexcept { return header_.count; }
  bool empty() const noexcept { return size() == 0; }
  const_iterator begin() const noexcept { return const_iterator(members()); }
  const_iterator end() const noexcept { return const_iterator(members() + size()); }

  /// The value under `key`, or null if there is none; a present JSON null is not a null pointer. Keys compare by
  /// canonical equivalence. Linear in small objects, logarithmic in large ones; valid as long as the object. Ends the
  /// process if there is no memory for comparing keys outside of ASCII.
  const JSONValue* find(std::string_view key) const noexcept;
  bool contains(std::string_view key) const noexcept { return find(key) != nullptr; }

 private:
  friend struct detail::JSONAccess;

  explicit JSONObject(detail::JSONContainerHeader header) noexcept : header_(header) {}

  const detail::JSONStoredMember* members() const noexcept {
    return reinterpret_cast<const detail::JSONStoredMember*>(this + 1);
  }

  detail::JSONContainerHeader header_;
};

/// Collects members for an object whose shape is known only at run time.
///
/// Keys are copied, and values keep what they are made of alive. Not thread-safe.
class JSONObjectBuilder {
 public:
  /// Adds a member; if the key was added before, the last value wins. Invalid UTF-8 in the key is repaired.
  JSONObjectBuilder& set(std::string_view key, JSONValue value);

  /// Adds a member only if there is a value.
  template <typename Value>
  JSONObjectBuilder& set(std::string_view key, const std::optional<Value>& value) {
    if (value) set(key, JSONValue(*value));
    return *this;
  }

  /// Whether no member has been added.
  bool empty() const noexcept { return members_.empty(); }

  /// The object. The builder keeps its members and may be extended and built again. Fails as `JSONValue::object`.
  JSONValue build() const;

 private:
  std::vector<std::pair<std::string, JSONValue>> members_;
};

}  // namespace ormel
