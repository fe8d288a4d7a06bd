#pragma once

#include <simdjson.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONReaderLimits.h"
#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/JSON/JSONTapeBuilder.h"
#include "OrmelSDK/JSON/JSONTapeRoom.h"

namespace ormel::detail {

/// Reads texts with simdjson's two stages and builds values straight from the tape and the string buffer that they
/// leave. Only for releases of simdjson for which `tapeLayoutIsKnown`. The types are parameters so that the compiler
/// looks at their members only where this reader is used.
template <typename Parser, typename Document>
class JSONTapeReader {
 public:
  /// Parses a text with readable bytes behind it. Returns false if simdjson refuses it, which need not mean that it is
  /// no JSON.
  /// @throws std::bad_alloc
  bool read(std::string_view text) { return readTo(text, strictDepth); }

  /// The same for a text known to be JSON no deeper than allowed.
  bool readExamined(std::string_view text) { return readTo(text, generousDepth); }

  /// Builds the value of the text that was read last, which itself is needed no more. To be called once.
  JSONValue build() {
    if (textSize_ > keptReaderLimit) parser_ = Parser();
    JSONTapeValue built = textSize_ >= adoptionThreshold ? buildByAdoption() : buildByCopy();
    hasBuiltIntegerZero_ = built.hasIntegerZero;
    return std::move(built.value);
  }

  /// Whether there is an integer zero in the value that was built last, which may have been minus zero in the text.
  bool hasBuiltIntegerZero() const noexcept { return hasBuiltIntegerZero_; }

 private:
  // From this size on a message takes over the parser's string buffer instead of copying out of it.
  static constexpr std::size_t adoptionThreshold = std::size_t{256} << 10;

  // From this size on memory counts for more than the time to arrange it well.
  static constexpr std::size_t frugalThreshold = std::size_t{16} << 20;

  // An upper bound for the bytes that the parser writes to its string buffer for a text of this size: of `["",""]` each
  // three bytes become five, and it copies in blocks.
  static constexpr std::size_t parserTextsSize(std::size_t textSize) { return 5 * textSize / 3 + 2 * jsonPadding; }

  bool readTo(std::string_view text, std::size_t depth) {
    textSize_ = text.size();
    const simdjson::error_code error = runStages(text, depth);
    if (error == simdjson::MEMALLOC) throw std::bad_alloc();
    return error == simdjson::SUCCESS;
  }

  // After the first stage it is known how large the tape can get, which is far less than the worst text of this size
  // would need.
  simdjson::error_code runStages(std::string_view text, std::size_t depth) {
    if (!parser_.implementation || text.size() > parser_.capacity()) {
      if (const auto error = parser_.allocate(bufferCapacity(text.size()), depth)) return error;
    }
    auto& stages = *parser_.implementation;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    // The mode without a value is that of a single text.
    if (const auto error = stages.stage1(bytes, text.size(), {})) return error;
    fitTexts(text.size());
    if (text.size() >= frugalThreshold) return runSecondStageInSharedRoom(text);
    fitTape(stages.n_structural_indexes);
    return stages.stage2(document_);
  }

  simdjson::error_code runSecondStageInSharedRoom(std::string_view text) {
    auto& stages = *parser_.implementation;
    JSONTapeRoom room = JSONTapeRoom::forTokens(text, stages.structural_indexes.get(), stages.n_structural_indexes);
    stages.structural_indexes.reset(room.positions());
    document_.tape = std::move(room.words);
    const auto error = stages.stage2(document_);
    // NOLINTNEXTLINE(bugprone-unused-return-value): it lies in the room of the tape
    (void)stages.structural_indexes.release();
    parser_.implementation.reset();
    return error;
  }

  void fitTape(std::size_t tokens) {
    // A token makes at most two words, and the root has two more.
    const std::size_t words = 2 * tokens + 2;
    if (tapeCapacity_ >= words) return;
    document_.tape.reset();
    document_.tape = std::make_unique_for_overwrite<std::uint64_t[]>(words);
    tapeCapacity_ = words;
  }

  void fitTexts(std::size_t textSize) {
    if (!document_.string_buf || textsCapacity_ < textSize) {
      textsCapacity_ = std::max(textSize, adoptionThreshold);
      document_.string_buf = std::make_unique_for_overwrite<std::uint8_t[]>(parserTextsSize(textsCapacity_));
    }
  }

  // An upper bound for the used part of the parser's string buffer, and within its size: a text of n bytes stood in
  // n + 2 of the source and takes n + 5, and two texts need a separator between them.
  std::size_t textsBound() const {
    return std::min(textSize_ + 3 * tapeWords(document_.tape.get()), textSize_ * 5 / 3 + 3) + textSlack;
  }

  JSONTapeValue buildByCopy() {
    const std::size_t nodes = tapeNodesBound(document_.tape.get());
    const std::size_t texts = textsBound();
    JSONBlockPointer block(JSONStorageBlock::allocate(nodes + texts, JSONStorageBlock::Contents::message));
    std::byte* const copy = block->payload() + nodes;
    const auto* source = reinterpret_cast<const std::byte*>(document_.string_buf.get());
    JSONTapeValue built = buildFromTape(document_.tape.get(), std::move(block), {.stored = copy, .readable = source});
    // Not before the walk: by now the parser's last stores have left the store buffer and can be loaded in blocks.
    if (JSONAccess::owner(built.value)) std::memcpy(copy, source, texts);
    return built;
  }

  JSONTapeValue buildByAdoption() {
    const std::size_t nodes = tapeNodesBound(document_.tape.get());
    JSONBlockPointer block(JSONStorageBlock::allocate(nodes, JSONStorageBlock::Contents::message));
    block->size += textSize_;
    auto* const texts = reinterpret_cast<std::byte*>(document_.string_buf.release());
    block->adoptedTexts = texts;
    return buildFromTape(document_.tape.get(), std::move(block), {.stored = texts, .readable = texts});
  }

  Parser parser_;
  Document document_;
  std::size_t textSize_ = 0;
  std::size_t tapeCapacity_ = 0;
  // The longest text for which the document's string buffer is large enough.
  std::size_t textsCapacity_ = 0;
  bool hasBuiltIntegerZero_ = false;
};

}  // namespace ormel::detail
