#include "OrmelSDK/JSON/JSONTapeBuilder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace ormel::detail {

namespace {

// simdjson's tape: a word is a type in its top byte and a payload below. A container's payload is the position
// behind it in 32 bits and its element count in 24; a count that does not fit reads as all ones.
constexpr std::uint64_t tapePayload = 0x00FFFFFFFFFFFFFFu;
constexpr std::uint32_t saturatedCount = 0xFFFFFF;

char tapeType(std::uint64_t word) { return static_cast<char>(word >> 56); }
std::uint32_t tapeEnd(std::uint64_t word) { return static_cast<std::uint32_t>(word); }

// The true number of elements of a container that has more than its word can say.
std::uint32_t countElements(const std::uint64_t* container, const std::uint64_t* tape) {
  const bool isObject = tapeType(*container) == '{';
  const std::uint64_t* const last = tape + tapeEnd(*container) - 1;
  std::uint32_t counted = 0;
  for (const auto* word = container + 1; word < last; ++counted) {
    if (isObject) ++word;
    switch (tapeType(*word)) {
      case '{':
      case '[':
        word = tape + tapeEnd(*word);
        break;
      case 'l':
      case 'u':
      case 'd':
        word += 2;
        break;
      default:
        ++word;
    }
  }
  return counted;
}

std::uint32_t tapeCount(const std::uint64_t* container, const std::uint64_t* tape) {
  const auto count = static_cast<std::uint32_t>(*container >> 32) & saturatedCount;
  if (count != saturatedCount) [[likely]]
    return count;
  return countElements(container, tape);
}

// Turns a tape into a message block in one walk without recursion. The container being filled is kept in locals, the
// ones around it on a stack.
class MessageBuilder {
 public:
  MessageBuilder(const std::uint64_t* tape, JSONStorageBlock* block, const JSONTextPlace& texts)
      : start_(tape), tape_(tape + 1), block_(block), free_(block->payload()), texts_(texts) {}

  // The first value to hold a reference to the block is the one returned: if building fails, the caller still owns the
  // block.
  JSONValue build() {
    const char type = tapeType(*tape_);
    if (type != '{' && type != '[') return readScalar();
    const void* const root = free_;
    fill(openContainer(type == '{'));
    return JSONAccess::make(root, block_, type == '{' ? JSONValue::Kind::object : JSONValue::Kind::array);
  }

  bool hasIntegerZero() const noexcept { return hasIntegerZero_; }

 private:
  struct Frame {
    JSONContainerHeader* header;
    std::byte* next;
    std::byte* end;
  };

  void fill(Frame current) {
    for (;;) {
      while (current.next != current.end) {
        auto* slot = reinterpret_cast<JSONValue*>(current.next);
        if (current.header->isObject) {
          auto* member = reinterpret_cast<JSONStoredMember*>(current.next);
          member->key = readText();
          slot = &member->value;
          current.next += sizeof(JSONStoredMember);
        } else {
          current.next += sizeof(JSONValue);
        }
        new (slot) JSONValue(readScalar());
        if (!JSONAccess::isContainer(*slot)) continue;
        stack_[depth_++] = current;
        current = openContainer(slot->kind() == JSONValue::Kind::object);
      }
      ++tape_;
      if (current.header->isObject) finishObject(current.header, texts_, JSONElements::uncounted);
      if (depth_ == 0) return;
      const auto height = static_cast<std::uint16_t>(current.header->height + 1);
      current = stack_[--depth_];
      current.header->height = std::max(current.header->height, height);
    }
  }

  const std::byte* readText() { return texts_.stored + (*tape_++ & tapePayload); }

  // Containers: creates only the handle; `openContainer` consumes the tape word and reserves the storage. Values inside
  // a block carry its address without holding a reference: `make` adds none, and none is released.
  JSONValue readScalar() {
    const std::uint64_t word = *tape_;
    switch (tapeType(word)) {
      case '"':
        return JSONAccess::make(readText(), block_, JSONValue::Kind::string);
      case 'l':
        tape_ += 2;
        hasIntegerZero_ |= tape_[-1] == 0;
        return JSONValue(static_cast<double>(static_cast<std::int64_t>(tape_[-1])));
      case 'u':
        tape_ += 2;
        return JSONValue(static_cast<double>(tape_[-1]));
      case 'd':
        tape_ += 2;
        return JSONValue(std::bit_cast<double>(tape_[-1]));
      case '{':
        return JSONAccess::make(free_, block_, JSONValue::Kind::object);
      case '[':
        return JSONAccess::make(free_, block_, JSONValue::Kind::array);
      case 't':
      case 'f':
        ++tape_;
        return JSONValue(tapeType(word) == 't');
      default:
        ++tape_;
        return JSONValue();
    }
  }

  Frame openContainer(bool isObject) {
    const std::uint32_t count = tapeCount(tape_++, start_);
    auto* header = JSONAccess::beginContainer(free_, {.count = count, .height = 1, .flags = 0, .isObject = isObject});
    auto* const elements = reinterpret_cast<std::byte*>(header + 1);
    free_ += containerSize(count, isObject);
    return {header, elements, elements + count * (isObject ? sizeof(JSONStoredMember) : sizeof(JSONValue))};
  }

  const std::uint64_t* start_;
  const std::uint64_t* tape_;
  JSONStorageBlock* block_;
  std::byte* free_;
  const JSONTextPlace& texts_;
  std::size_t depth_ = 0;
  bool hasIntegerZero_ = false;
  std::array<Frame, generousDepth> stack_;
};

}  // namespace

std::size_t tapeWords(const std::uint64_t* tape) noexcept { return tapeEnd(tape[0]); }

std::size_t tapeNodesBound(const std::uint64_t* tape) noexcept { return tapeWords(tape) * sizeof(JSONValue); }

JSONTapeValue buildFromTape(const std::uint64_t* tape, JSONBlockPointer block, const JSONTextPlace& texts) {
  MessageBuilder builder(tape, block.get(), texts);
  JSONValue root = builder.build();
  if (JSONAccess::owner(root)) {
    // NOLINTNEXTLINE(bugprone-unused-return-value): the value owns it now
    (void)block.release();
  }
  return {std::move(root), builder.hasIntegerZero()};
}

}  // namespace ormel::detail
