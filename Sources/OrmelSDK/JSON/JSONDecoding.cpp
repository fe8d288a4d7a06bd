#include "OrmelSDK/JSON/JSONDecoding.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/JSON/JSONSyntax.h"

namespace ormel {

namespace detail {

namespace {

static_assert(jsonPadding >= simdjson::SIMDJSON_PADDING);

// A thread keeps its parser for texts up to this size. A larger text gets one of its own, so that a single huge
// message does not pin its working memory.
constexpr std::size_t keptParserLimit = std::size_t{2} << 20;

// From this size on a message takes over the parser's string buffer instead of copying out of it.
constexpr std::size_t adoptionThreshold = std::size_t{256} << 10;

// From this size on memory counts for more than the time to arrange it well.
constexpr std::size_t frugalThreshold = std::size_t{16} << 20;

// simdjson counts a container only once it meets something inside, and lets an empty one pass at its limit. The strict
// limit admits no text that is too deep, and refuses some of exactly the deepest nesting; those are examined and then
// read with the generous one.
constexpr std::size_t strictDepth = JSONValue::maximumDecodingDepth;
constexpr std::size_t generousDepth = strictDepth + 1;

// simdjson's tape: a word is a type in its top byte and a payload below. A container's payload is the position
// behind it in 32 bits and its element count in 24; a count that does not fit reads as all ones.
constexpr std::uint64_t tapePayload = 0x00FFFFFFFFFFFFFFu;
constexpr std::uint32_t saturatedCount = 0xFFFFFF;

char tapeType(std::uint64_t word) { return static_cast<char>(word >> 56); }
std::uint32_t tapeEnd(std::uint64_t word) { return static_cast<std::uint32_t>(word); }

// Counts what a container with more elements than its word can say really holds.
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

// Turns a tape into a message block: walks it once, without recursion. The container being filled is kept in locals,
// the ones around it on a stack.
class MessageBuilder {
 public:
  MessageBuilder(const std::uint64_t* tape, JSONStorageBlock* block, const JSONTextPlace& texts)
      : start_(tape), tape_(tape + 1), block_(block), free_(block->payload()), texts_(texts) {}

  // The first value to hold a reference to the block is the one returned: if building fails, the block is still its
  // owner's.
  JSONValue build() {
    const char type = tapeType(*tape_);
    if (type != '{' && type != '[') return readScalar();
    const void* const root = free_;
    fill(openContainer(type == '{'));
    return JSONAccess::make(root, block_, type == '{' ? JSONValue::Kind::object : JSONValue::Kind::array);
  }

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

  // Reads a value; of a container only the shell, whose place is still free and whose word is left on the tape.
  // Values inside of a block carry its address but hold no reference: `make` adds none, and none is released.
  JSONValue readScalar() {
    const std::uint64_t word = *tape_;
    switch (tapeType(word)) {
      case '"':
        return JSONAccess::make(readText(), block_, JSONValue::Kind::string);
      case 'l':
        tape_ += 2;
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
  std::array<Frame, generousDepth> stack_;
};

// How many words of tape the token makes that begins with this character. What begins no token makes none in the end.
constexpr std::size_t tapeWordsOf(char token) {
  switch (token) {
    case ',':
    case ':':
      return 0;
    case '{':
    case '}':
    case '[':
    case ']':
    case '"':
    case 't':
    case 'f':
    case 'n':
      return 1;
    default:
      return 2;
  }
}

// Room for a tape and, behind its first words, for the places of the tokens that it is made of. The second stage reads
// one and writes the other from their beginnings on: the tape may take the room of places that have been read.
struct SharedRoom {
  // Behind those of the tokens simdjson puts some that tell it where the text ends.
  static constexpr std::size_t closingPlaces = 3;

  std::unique_ptr<std::uint64_t[]> words;
  // In units of places.
  std::size_t placesAt = 0;

  std::uint32_t* places() const { return reinterpret_cast<std::uint32_t*>(words.get()) + placesAt; }

  static SharedRoom forTokens(std::string_view text, const std::uint32_t* places, std::size_t tokens) {
    constexpr std::size_t placesInWord = sizeof(std::uint64_t) / sizeof(std::uint32_t);
    // An empty container is written whole when its beginning is read, and the root has a word at either end.
    constexpr std::size_t margin = 4 * placesInWord;
    std::size_t written = 0;
    std::size_t lead = 0;
    for (std::size_t token = 0; token < tokens; ++token) {
      written += placesInWord * tapeWordsOf(text[places[token]]);
      if (written > token) lead = std::max(lead, written - token);
    }
    SharedRoom room;
    room.placesAt = lead + margin;
    const std::size_t all = std::max(room.placesAt + tokens + closingPlaces, written + margin);
    room.words = std::make_unique_for_overwrite<std::uint64_t[]>(all / placesInWord + 1);
    std::memcpy(room.places(), places, (tokens + closingPlaces) * sizeof *places);
    return room;
  }
};

// What the parser may write for a text of this size: of `["",""]` each three bytes become five, and it copies in
// blocks.
constexpr std::size_t parserTextsSize(std::size_t textSize) { return 5 * textSize / 3 + 2 * jsonPadding; }

struct Parser {
  simdjson::dom::parser parser;
  simdjson::dom::document document;
  std::unique_ptr<char[]> padded;
  std::size_t paddedSize = 0;
  std::size_t tapeCapacity = 0;
  // The longest text for which the document's string buffer is large enough.
  std::size_t textsCapacity = 0;

  // A copy of a text with readable bytes behind it.
  std::string_view pad(std::string_view text) {
    if (paddedSize < text.size() + jsonPadding) {
      paddedSize = std::bit_ceil(text.size() + jsonPadding);
      padded = std::make_unique_for_overwrite<char[]>(paddedSize);
    }
    if (!text.empty()) std::memcpy(padded.get(), text.data(), text.size());
    return {padded.get(), text.size()};
  }

  // In simdjson's two stages: after the first it is known how large the tape can get, which is far less than what would
  // be needed for the worst text of this size.
  simdjson::error_code run(std::string_view text, std::size_t depth = strictDepth) {
    if (!parser.implementation || text.size() > parser.capacity()) {
      // Growing in powers of two keeps a slowly rising line length from reallocating at every line.
      const std::size_t capacity = text.size() > keptParserLimit ? text.size() : std::bit_ceil(text.size() | 4096);
      if (const auto error = parser.allocate(capacity, depth)) return error;
    }
    auto& stages = *parser.implementation;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    if (const auto error = stages.stage1(bytes, text.size(), simdjson::stage1_mode::regular)) return error;
    fitTexts(text.size());
    if (text.size() >= frugalThreshold) return runSecondStageInSharedRoom(text);
    fitTape(stages.n_structural_indexes);
    return stages.stage2(document);
  }

  simdjson::error_code runSecondStageInSharedRoom(std::string_view text) {
    auto& stages = *parser.implementation;
    SharedRoom room = SharedRoom::forTokens(text, stages.structural_indexes.get(), stages.n_structural_indexes);
    stages.structural_indexes.reset(room.places());
    document.tape = std::move(room.words);
    const auto error = stages.stage2(document);
    // NOLINTNEXTLINE(bugprone-unused-return-value): it lies in the room of the tape
    (void)stages.structural_indexes.release();
    parser.implementation.reset();
    return error;
  }

  void fitTape(std::size_t tokens) {
    // A token makes at most two words, and the root has two more.
    const std::size_t words = 2 * tokens + 2;
    if (tapeCapacity >= words) return;
    document.tape.reset();
    document.tape = std::make_unique_for_overwrite<std::uint64_t[]>(words);
    tapeCapacity = words;
  }

  void fitTexts(std::size_t textSize) {
    if (!document.string_buf || textsCapacity < textSize) {
      textsCapacity = std::max(textSize, adoptionThreshold);
      document.string_buf = std::make_unique_for_overwrite<std::uint8_t[]>(parserTextsSize(textsCapacity));
    }
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
  return std::min(sourceSize + 3 * tapeWords(document), sourceSize * 5 / 3 + 3) + textSlack;
}

// Builds into a new block, which the value then owns; a value without parts needs none.
JSONValue buildInto(JSONBlockPointer block, const simdjson::dom::document& document, const JSONTextPlace& texts) {
  JSONValue root = MessageBuilder(document.tape.get(), block.get(), texts).build();
  if (JSONAccess::owner(root)) {
    // NOLINTNEXTLINE(bugprone-unused-return-value): the value owns it now
    (void)block.release();
  }
  return root;
}

JSONValue buildByCopy(const simdjson::dom::document& document, std::size_t sourceSize) {
  const std::size_t nodes = nodesBound(document);
  const std::size_t texts = textsBound(document, sourceSize);
  JSONBlockPointer block(JSONStorageBlock::allocate(nodes + texts, JSONStorageBlock::Contents::message));
  std::byte* const copy = block->payload() + nodes;
  const auto* source = reinterpret_cast<const std::byte*>(document.string_buf.get());
  JSONValue root = buildInto(std::move(block), document, {.stored = copy, .readable = source});
  // Not before the walk: by now the parser's last stores have left the store buffer and can be loaded in blocks.
  if (JSONAccess::owner(root)) std::memcpy(copy, source, texts);
  return root;
}

JSONValue buildByAdoption(simdjson::dom::document& document, std::size_t sourceSize) {
  JSONBlockPointer block(JSONStorageBlock::allocate(nodesBound(document), JSONStorageBlock::Contents::message));
  block->size += sourceSize;
  auto* const texts = reinterpret_cast<std::byte*>(document.string_buf.release());
  block->adoptedTexts = texts;
  return buildInto(std::move(block), document, {.stored = texts, .readable = texts});
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

JSONValue decodeRefused(std::string_view text, simdjson::error_code error);

JSONValue decodeBy(std::string_view text, Parser& parser) {
  if (const auto error = parser.run(text)) [[unlikely]]
    return decodeRefused(text, error);
  if (text.size() >= adoptionThreshold) return buildByAdoption(parser.document, text.size());
  return buildByCopy(parser.document, text.size());
}

JSONValue decodeLarge(std::string_view text) {
  const auto parser = std::make_unique<Parser>();
  if (const auto error = parser->run(text)) return decodeRefused(text, error);
  return buildByAdoption(parser->document, text.size());
}

// Reads a text that has been found to be JSON of an allowed depth.
JSONValue decodeExamined(std::string_view text, const std::vector<std::size_t>& ends) {
  std::string rewritten = withWideIntegersAsDoubles(text, ends);
  const std::size_t size = rewritten.size();
  rewritten.append(jsonPadding, ' ');
  Parser parser;
  if (parser.run(std::string_view(rewritten).substr(0, size), generousDepth)) failUnsupported();
  return buildByAdoption(parser.document, size);
}

JSONValue decodeRefused(std::string_view text, simdjson::error_code error) {
  if (error == simdjson::MEMALLOC) throw std::bad_alloc();
  const JSONExamination examination = examineJSON(text, JSONValue::maximumDecodingDepth);
  if (examination.failure) {
    DecodingContext context("The given data was not valid JSON.");
    context.underlyingError =
        std::make_shared<JSONSyntaxError>(examination.failure->reason, examination.failure->byteOffset);
    throw DecodingError::dataCorrupted(std::move(context));
  }
  return decodeExamined(text, examination.wideIntegerEnds);
}

}  // namespace

JSONValue decodePaddedJSON(std::string_view text) {
  return text.size() > keptParserLimit ? decodeLarge(text) : decodeBy(text, threadParser());
}

JSONValue decodePaddedJSON(ByteBuffer text) {
  if (text.size() <= keptParserLimit) return decodeBy(text.view(), threadParser());
  const auto parser = std::make_unique<Parser>();
  if (const auto error = parser->run(text.view())) return decodeRefused(text.view(), error);
  const std::size_t size = text.size();
  text = ByteBuffer();
  parser->parser = simdjson::dom::parser();
  return buildByAdoption(parser->document, size);
}

}  // namespace detail

JSONValue JSONValue::decode(std::string_view text) {
  if (text.size() > detail::keptParserLimit) {
    std::string padded;
    padded.reserve(text.size() + detail::jsonPadding);
    padded = text;
    padded.append(detail::jsonPadding, ' ');
    return detail::decodeLarge(std::string_view(padded).substr(0, text.size()));
  }
  detail::Parser& parser = detail::threadParser();
  return detail::decodeBy(parser.pad(text), parser);
}

}  // namespace ormel
