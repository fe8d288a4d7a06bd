#include "OrmelSDK/JSONDecoding.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "OrmelSDK/JSONStorage.h"
#include "OrmelSDK/JSONSyntax.h"

namespace ormel {

namespace detail {

namespace {

static_assert(jsonPadding >= simdjson::SIMDJSON_PADDING);

// A thread keeps its parser for texts up to this size. A larger text gets one of its own, whose string buffer then
// becomes the message's: a single huge message neither pins its working memory nor has its texts copied.
constexpr std::size_t keptParserLimit = std::size_t{2} << 20;

// simdjson's tape: a word is a type in its top byte and a payload below. A container's payload is the position
// behind it in 32 bits and its element count in 24; a count that does not fit reads as all ones.
constexpr std::uint64_t tapePayload = 0x00FFFFFFFFFFFFFFu;
constexpr std::uint32_t saturatedCount = 0xFFFFFF;

char tapeType(std::uint64_t word) { return static_cast<char>(word >> 56); }
std::uint32_t tapeEnd(std::uint64_t word) { return static_cast<std::uint32_t>(word); }

std::uint32_t tapeCount(const std::uint64_t* tape, std::size_t at) {
  const auto count = static_cast<std::uint32_t>(tape[at] >> 32) & saturatedCount;
  if (count != saturatedCount) return count;
  const bool isObject = tapeType(tape[at]) == '{';
  const std::size_t last = tapeEnd(tape[at]) - 1;
  std::uint32_t counted = 0;
  for (std::size_t next = at + 1; next < last; ++counted) {
    if (isObject) ++next;
    switch (tapeType(tape[next])) {
      case '{':
      case '[':
        next = tapeEnd(tape[next]);
        break;
      case 'l':
      case 'u':
      case 'd':
        next += 2;
        break;
      default:
        ++next;
    }
  }
  return counted;
}

// Turns a tape into a message block: walks it once, without recursion, with the open containers on a stack.
class MessageBuilder {
 public:
  MessageBuilder(const std::uint64_t* tape, JSONStorageBlock* block, const std::byte* texts)
      : tape_(tape), block_(block), free_(block->payload()), texts_(texts) {}

  JSONValue build() {
    JSONValue root = readElement();
    while (depth_ > 0) {
      Frame& frame = frames_[depth_ - 1];
      if (frame.remaining == 0) {
        close(frame);
        continue;
      }
      --frame.remaining;
      if (frame.header->isObject) {
        auto* member = static_cast<JSONStoredMember*>(frame.next);
        frame.next = member + 1;
        member->key = takeText();
        frame.keys.add(member->key);
        new (&member->value) JSONValue(readElement());
      } else {
        auto* element = static_cast<JSONValue*>(frame.next);
        frame.next = element + 1;
        new (element) JSONValue(readElement());
      }
    }
    return root;
  }

 private:
  struct Frame {
    JSONContainerHeader* header;
    void* next;
    std::uint32_t remaining;
    JSONKeyWatch keys;
  };

  const std::byte* takeText() { return texts_ + (tape_[at_++] & tapePayload); }

  // Values inside of a block carry its address but hold no reference: `make` adds none, and none is released.
  JSONValue readElement() {
    const std::uint64_t word = tape_[at_];
    switch (tapeType(word)) {
      case '"':
        return JSONAccess::make(takeText(), block_, JSONValue::Kind::string);
      case 'l':
        at_ += 2;
        return JSONValue(static_cast<double>(static_cast<std::int64_t>(tape_[at_ - 1])));
      case 'u':
        at_ += 2;
        return JSONValue(static_cast<double>(tape_[at_ - 1]));
      case 'd':
        at_ += 2;
        return JSONValue(std::bit_cast<double>(tape_[at_ - 1]));
      case 't':
      case 'f':
        ++at_;
        return JSONValue(tapeType(word) == 't');
      case '{':
      case '[':
        return openContainer(tapeType(word) == '{');
      default:
        ++at_;
        return JSONValue();
    }
  }

  JSONValue openContainer(bool isObject) {
    const std::uint32_t count = tapeCount(tape_, at_++);
    auto* header = new (free_) JSONContainerHeader{.count = count, .height = 1, .flags = 0, .isObject = isObject};
    free_ += containerSize(count, isObject);
    frames_[depth_++] = Frame{header, header + 1, count, {}};
    return JSONAccess::make(header, block_, isObject ? JSONValue::Kind::object : JSONValue::Kind::array);
  }

  void close(Frame& frame) {
    ++at_;
    --depth_;
    if (frame.header->isObject) finishObject(frame.header, frame.keys);
    if (depth_ == 0) return;
    auto& parent = *frames_[depth_ - 1].header;
    parent.height = std::max<std::uint16_t>(parent.height, static_cast<std::uint16_t>(frame.header->height + 1));
  }

  const std::uint64_t* tape_;
  JSONStorageBlock* block_;
  std::byte* free_;
  const std::byte* texts_;
  std::size_t at_ = 1;
  std::size_t depth_ = 0;
  std::array<Frame, JSONValue::maximumDecodingDepth> frames_;
};

struct Parser {
  simdjson::dom::parser parser;
  simdjson::dom::document document;

  simdjson::error_code run(std::string_view text) {
    if (text.size() > parser.capacity()) {
      // Growing in powers of two keeps a slowly rising line length from reallocating at every line.
      const std::size_t capacity = text.size() > keptParserLimit ? text.size() : std::bit_ceil(text.size() | 4096);
      if (const auto error = parser.allocate(capacity, JSONValue::maximumDecodingDepth)) return error;
      if (const auto error = document.allocate(capacity)) return error;
    }
    return parser.parse_into_document(document, text.data(), text.size(), false).error();
  }
};

Parser& threadParser() {
  thread_local Parser parser;
  return parser;
}

std::size_t tapeWords(const simdjson::dom::document& document) { return tapeEnd(document.tape[0]); }

// An upper bound: no element needs more than 16 bytes a tape word.
std::size_t nodesBound(const simdjson::dom::document& document) { return tapeWords(document) * sizeof(JSONValue); }

// An upper bound for the used part of the parser's string buffer, and within its size: a text of n bytes stood in
// n + 2 of the source and takes n + 5, and two texts need a separator between them.
std::size_t textsBound(const simdjson::dom::document& document, std::size_t sourceSize) {
  return std::min(sourceSize + 3 * tapeWords(document), sourceSize * 5 / 3 + 3) + keySlack;
}

JSONValue buildByCopy(const simdjson::dom::document& document, std::size_t sourceSize) {
  const std::size_t nodes = nodesBound(document);
  const std::size_t texts = textsBound(document, sourceSize);
  auto* block = JSONStorageBlock::allocate(nodes + texts, JSONStorageBlock::Contents::message);
  std::byte* const copiedTexts = block->payload() + nodes;
  std::memcpy(copiedTexts, document.string_buf.get(), texts);
  return MessageBuilder(document.tape.get(), block, copiedTexts).build();
}

JSONValue buildByAdoption(simdjson::dom::document& document) {
  auto* block = JSONStorageBlock::allocate(nodesBound(document), JSONStorageBlock::Contents::message);
  block->adoptedTexts = reinterpret_cast<std::byte*>(document.string_buf.release());
  return MessageBuilder(document.tape.get(), block, block->adoptedTexts).build();
}

// Makes every integer that may exceed 64 bits a number with an exponent, which simdjson reads as the nearest double.
std::string withWideIntegersAsDoubles(std::string_view text, const std::vector<std::size_t>& ends) {
  constexpr std::string_view exponent = "e0";
  std::string rewritten;
  rewritten.reserve(text.size() + ends.size() * exponent.size() + jsonPadding);
  std::size_t start = 0;
  for (const std::size_t end : ends) {
    rewritten += text.substr(start, end - start);
    rewritten += exponent;
    start = end;
  }
  rewritten += text.substr(start);
  return rewritten;
}

[[noreturn]] void failUnsupported() { throw DecodingError::dataCorrupted(DecodingContext("Unsupported JSON value")); }

JSONValue decodePadded(std::string_view text, bool mayHaveWideIntegers);

JSONValue decodeRefused(std::string_view text, simdjson::error_code error, bool mayHaveWideIntegers) {
  if (error == simdjson::MEMALLOC) throw std::bad_alloc();
  const JSONExamination examination = examineJSON(text, JSONValue::maximumDecodingDepth);
  if (examination.failure) {
    DecodingContext context("The given data was not valid JSON.");
    context.underlyingError =
        std::make_shared<JSONSyntaxError>(examination.failure->reason, examination.failure->byteOffset);
    throw DecodingError::dataCorrupted(std::move(context));
  }
  if (!mayHaveWideIntegers || examination.wideIntegerEnds.empty()) failUnsupported();
  std::string rewritten = withWideIntegersAsDoubles(text, examination.wideIntegerEnds);
  const std::size_t size = rewritten.size();
  rewritten.append(jsonPadding, ' ');
  return decodePadded(std::string_view(rewritten).substr(0, size), false);
}

JSONValue decodePadded(std::string_view text, bool mayHaveWideIntegers) {
  if (text.size() > keptParserLimit) {
    auto own = std::make_unique<Parser>();
    if (const auto error = own->run(text)) return decodeRefused(text, error, mayHaveWideIntegers);
    return buildByAdoption(own->document);
  }
  Parser& parser = threadParser();
  if (const auto error = parser.run(text)) return decodeRefused(text, error, mayHaveWideIntegers);
  return buildByCopy(parser.document, text.size());
}

}  // namespace

JSONValue decodePaddedJSON(std::string_view text) { return decodePadded(text, true); }

}  // namespace detail

JSONValue JSONValue::decode(std::string_view text) {
  thread_local std::unique_ptr<char[]> kept;
  thread_local std::size_t keptSize = 0;
  const std::size_t needed = text.size() + detail::jsonPadding;
  std::unique_ptr<char[]> own;
  char* buffer = kept.get();
  if (text.size() > detail::keptParserLimit) {
    own = std::make_unique_for_overwrite<char[]>(needed);
    buffer = own.get();
  } else if (keptSize < needed) {
    keptSize = std::bit_ceil(needed);
    kept = std::make_unique_for_overwrite<char[]>(keptSize);
    buffer = kept.get();
  }
  if (!text.empty()) std::memcpy(buffer, text.data(), text.size());
  std::memset(buffer + text.size(), ' ', detail::jsonPadding);
  return detail::decodePaddedJSON({buffer, text.size()});
}

}  // namespace ormel
