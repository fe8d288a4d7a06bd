#include "PageText.h"

#include <OrmelSDK/Text/UTF8.h>
#include <libxml/HTMLparser.h>
#include <libxml/parser.h>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "Tool.h"

namespace tessella {

namespace {

constexpr std::array<std::string_view, 6> unseenElements = {"head", "noscript", "script", "style", "template", "title"};
constexpr std::array<std::string_view, 12> inlineElements = {"a",    "abbr", "b",     "code", "em",     "i",
                                                             "mark", "q",    "small", "span", "strong", "u"};

bool isSpace(char byte) { return std::string_view(" \t\r\n\f\v").find(byte) != std::string_view::npos; }

std::string_view nameOf(const xmlNode& node) { return reinterpret_cast<const char*>(node.name); }

std::string_view contentOf(const xmlNode& node) {
  return node.content ? reinterpret_cast<const char*>(node.content) : "";
}

bool isText(const xmlNode& node) { return node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE; }

bool isUnseen(const xmlNode& node) {
  if (node.type != XML_ELEMENT_NODE) return !isText(node) && node.type != XML_ENTITY_REF_NODE;
  return std::ranges::find(unseenElements, nameOf(node)) != unseenElements.end() ||
         xmlHasProp(&node, reinterpret_cast<const xmlChar*>("hidden")) != nullptr;
}

bool isBlock(const xmlNode& node) {
  return node.type == XML_ELEMENT_NODE && std::ranges::find(inlineElements, nameOf(node)) == inlineElements.end();
}

/// Collapses white space and lets blocks start on a line of their own.
class TextCollector {
 public:
  void append(std::string_view text) {
    for (const char byte : text) {
      if (isSpace(byte)) {
        spacePending_ = true;
      } else {
        separate();
        text_ += byte;
      }
    }
  }
  void breakLine() { breakPending_ = true; }
  std::string take() { return std::move(text_); }

 private:
  void separate() {
    if (!text_.empty()) {
      if (breakPending_) {
        text_ += '\n';
      } else if (spacePending_) {
        text_ += ' ';
      }
    }
    breakPending_ = spacePending_ = false;
  }

  std::string text_;
  bool breakPending_ = false;
  bool spacePending_ = false;
};

/// The next node in document order outside of `node`'s children. Pages nest as deep as they like, so nothing here
/// recurses.
const xmlNode* following(const xmlNode* node, TextCollector& collector) {
  while (node && !node->next) {
    node = node->parent;
    if (node && isBlock(*node)) collector.breakLine();
  }
  return node ? node->next : nullptr;
}

std::string visibleText(const xmlNode* root) {
  TextCollector collector;
  for (const auto* node = root; node;) {
    const bool unseen = isUnseen(*node);
    if (isText(*node)) collector.append(contentOf(*node));
    if (isBlock(*node) && !unseen) collector.breakLine();
    const bool descend = node->children && !unseen && node->type == XML_ELEMENT_NODE;
    if (descend) {
      node = node->children;
    } else {
      node = following(node, collector);
    }
  }
  return collector.take();
}

std::string titleOf(const xmlNode* root) {
  TextCollector ignored;
  for (const auto* node = root; node;) {
    if (node->type == XML_ELEMENT_NODE && nameOf(*node) == "title") {
      TextCollector title;
      for (const auto* part = node->children; part; part = part->next) title.append(contentOf(*part));
      return title.take();
    }
    const bool descend = node->children && node->type == XML_ELEMENT_NODE;
    node = descend ? node->children : following(node, ignored);
  }
  return {};
}

PageText readHTML(const std::string& body) {
  static std::once_flag parserReady;
  std::call_once(parserReady, xmlInitParser);

  // Without a hint the parser takes bytes for Latin-1 until it meets a declaration, which many pages lack.
  const char* encoding = ormel::isValidUTF8(body) ? "UTF-8" : nullptr;
  constexpr int options = HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET;
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
      htmlReadMemory(body.data(), static_cast<int>(body.size()), nullptr, encoding, options), xmlFreeDoc);
  const auto* root = document ? xmlDocGetRootElement(document.get()) : nullptr;
  return {.title = titleOf(root), .text = visibleText(root)};
}

}  // namespace

PageText readPage(const FetchedPage& page) {
  const std::string_view contentType = page.contentType;
  if (contentType.starts_with("text/html") || contentType.starts_with("application/xhtml+xml")) {
    return readHTML(page.body);
  }
  if (contentType.starts_with("text/plain")) return {.title = {}, .text = ormel::repairedUTF8(page.body)};
  throw ToolFailure("The address serves no page, but \"" + page.contentType + "\".");
}

}  // namespace tessella
