#include "OrmelSDK/JSON/JSONDocumentReader.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <new>
#include <utility>

#include "OrmelSDK/JSON/JSONDecoder.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONReaderLimits.h"
#include "OrmelSDK/JSON/JSONStorage.h"

namespace ormel::detail {

namespace {

namespace dom = simdjson::dom;

// simdjson's `size` of an array or object stops at this number.
constexpr std::size_t largestReportedSize = 0xFFFFFF;

template <typename Container>
std::uint32_t countOf(const Container& container) {
  const std::size_t reported = container.size();
  if (reported < largestReportedSize) [[likely]]
    return static_cast<std::uint32_t>(reported);
  return static_cast<std::uint32_t>(std::distance(container.begin(), container.end()));
}

dom::array arrayOf(const dom::element& element) { return element.get_array().value_unsafe(); }
dom::object objectOf(const dom::element& element) { return element.get_object().value_unsafe(); }
std::string_view textOf(const dom::element& element) { return element.get_string().value_unsafe(); }

// Adds up the storage that a document needs.
class DocumentSize {
 public:
  // Returns false if the element lies deeper than allowed or is of a kind unknown to us.
  bool add(const dom::element& element, std::size_t depth = 0) {
    switch (element.type()) {
      case dom::element_type::OBJECT:
        return addObject(objectOf(element), depth + 1);
      case dom::element_type::ARRAY:
        return addArray(arrayOf(element), depth + 1);
      case dom::element_type::STRING:
        texts += textOf(element).size() + textOverhead;
        return true;
      case dom::element_type::INT64:
        hasIntegerZero |= element.get_int64().value_unsafe() == 0;
        return true;
      case dom::element_type::UINT64:
      case dom::element_type::DOUBLE:
      case dom::element_type::BOOL:
      case dom::element_type::NULL_VALUE:
        return true;
      default:
        return false;
    }
  }

  std::size_t nodes = 0;
  std::size_t texts = 0;
  bool hasIntegerZero = false;

 private:
  bool addObject(const dom::object& object, std::size_t depth) {
    if (depth > JSONValue::maximumDecodingDepth) return false;
    nodes += containerSize(countOf(object), true);
    return std::all_of(object.begin(), object.end(), [&](const dom::key_value_pair& member) {
      texts += member.key.size() + textOverhead;
      return add(member.value, depth);
    });
  }

  bool addArray(const dom::array& array, std::size_t depth) {
    if (depth > JSONValue::maximumDecodingDepth) return false;
    nodes += containerSize(countOf(array), false);
    return std::all_of(array.begin(), array.end(), [&](const dom::element& element) { return add(element, depth); });
  }
};

// Copies a document into a message block. While it does, no value holds a reference to the block: if copying fails, the
// caller still owns the block.
class DocumentCopier {
 public:
  /// A document without containers and texts needs no block.
  DocumentCopier(JSONStorageBlock* block, std::size_t nodesSize)
      : block_(block),
        nodes_(block ? block->payload() : nullptr),
        texts_(nodes_ + nodesSize),
        place_{.stored = texts_, .readable = texts_} {}

  JSONValue copy(const dom::element& element) {
    switch (element.type()) {
      case dom::element_type::OBJECT:
        return JSONAccess::make(copyObject(objectOf(element)), block_, JSONValue::Kind::object);
      case dom::element_type::ARRAY:
        return JSONAccess::make(copyArray(arrayOf(element)), block_, JSONValue::Kind::array);
      case dom::element_type::STRING:
        return JSONAccess::make(copyText(textOf(element)), block_, JSONValue::Kind::string);
      case dom::element_type::INT64:
        return JSONValue(static_cast<double>(element.get_int64().value_unsafe()));
      case dom::element_type::UINT64:
        return JSONValue(static_cast<double>(element.get_uint64().value_unsafe()));
      case dom::element_type::DOUBLE:
        return JSONValue(element.get_double().value_unsafe());
      case dom::element_type::BOOL:
        return JSONValue(element.get_bool().value_unsafe());
      default:
        return JSONValue();
    }
  }

 private:
  JSONContainerHeader* open(std::uint32_t count, bool isObject) {
    auto* header = JSONAccess::beginContainer(nodes_, {.count = count, .height = 1, .flags = 0, .isObject = isObject});
    nodes_ += containerSize(count, isObject);
    return header;
  }

  static void raise(JSONContainerHeader& header, const JSONValue& element) {
    const auto height = static_cast<std::uint16_t>(JSONAccess::height(element) + 1);
    header.height = std::max(header.height, height);
  }

  const void* copyObject(const dom::object& object) {
    JSONContainerHeader* const header = open(countOf(object), true);
    auto* slot = membersOf(header);
    for (const dom::key_value_pair member : object) {
      slot->key = copyText(member.key);
      raise(*header, *new (&slot->value) JSONValue(copy(member.value)));
      ++slot;
    }
    finishObject(header, place_, JSONElements::uncounted);
    return header;
  }

  const void* copyArray(const dom::array& array) {
    JSONContainerHeader* const header = open(countOf(array), false);
    auto* slot = elementsOf(header);
    for (const dom::element element : array) raise(*header, *new (slot++) JSONValue(copy(element)));
    return header;
  }

  const std::byte* copyText(std::string_view text) {
    const std::byte* const copied = texts_;
    texts_ = storeText(texts_, text);
    return copied;
  }

  const JSONStorageBlock* block_;
  std::byte* nodes_;
  std::byte* texts_;
  JSONTextPlace place_;
};

// The depth is checked here. simdjson only has to let every allowed text pass, however a release counts.
constexpr std::size_t parserDepth = 2 * JSONValue::maximumDecodingDepth;

// Newer releases of simdjson skip a byte order mark, which JSON does not allow.
bool startsWithByteOrderMark(std::string_view text) { return text.starts_with("\xEF\xBB\xBF"); }

}  // namespace

simdjson::error_code JSONDocumentReader::parse(std::string_view text) {
  if (text.size() > parser_.capacity() || parser_.capacity() == 0) {
    if (const auto error = parser_.allocate(bufferCapacity(text.size()), parserDepth)) return error;
  }
  // A release that reads further behind a text than ours promises makes a copy of its own.
  constexpr bool copies = jsonPadding < simdjson::SIMDJSON_PADDING;
  return parser_.parse(text.data(), text.size(), copies).get(root_);
}

bool JSONDocumentReader::read(std::string_view text) {
  if (startsWithByteOrderMark(text)) return false;
  const simdjson::error_code error = parse(text);
  if (error == simdjson::MEMALLOC) throw std::bad_alloc();
  if (error) return false;
  DocumentSize size;
  if (!size.add(root_)) return false;
  nodesSize_ = size.nodes;
  textsSize_ = size.texts;
  hasIntegerZero_ = size.hasIntegerZero;
  return true;
}

JSONValue JSONDocumentReader::build() {
  if (nodesSize_ + textsSize_ == 0) return DocumentCopier(nullptr, 0).copy(root_);
  JSONBlockPointer block(
      JSONStorageBlock::allocate(nodesSize_ + textsSize_ + textSlack, JSONStorageBlock::Contents::message));
  JSONValue root = DocumentCopier(block.get(), nodesSize_).copy(root_);
  // NOLINTNEXTLINE(bugprone-unused-return-value): the value owns it now
  (void)block.release();
  return root;
}

JSONValue decodeThroughDocument(std::string_view text) { return JSONDecoder<JSONDocumentReader>::decode(text); }

}  // namespace ormel::detail
