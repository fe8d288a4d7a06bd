#include "JSONLines.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace ormel::chat {

struct JSONLines::GrowingText {
  std::string_view member;
  /// Where the member is a list of texts.
  std::optional<std::size_t> index;
  SharedText text;

  std::string keyIn(const std::string& itemID) const {
    return itemID + '/' + std::string(member) + (index ? '/' + std::to_string(*index) : "");
  }
};

namespace {

/// A longer text is not repeated when its item is complete, and goes out in several pieces if it came in one. In bytes.
constexpr std::size_t longestPiece = 65536;

/// A piece for one line, not ending within a character.
std::string_view nextPiece(std::string_view text) {
  if (text.size() <= longestPiece) return text;
  std::size_t end = longestPiece;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return text.substr(0, end);
}

/// The event without the texts, but with how long they are.
template <typename Event>
JSONValue withSizes(const Event& event, const std::map<std::string_view, std::size_t>& sizes) {
  const JSONValue encoded = encode(ThreadEvent(event));
  JSONObjectBuilder object;
  for (const auto& [key, value] : *encoded.objectValue()) object.set(key, value);
  JSONObjectBuilder omitted;
  for (const auto& [member, size] : sizes) omitted.set(member, JSONValue(size));
  object.set("omitted_bytes", omitted.build());
  return object.build();
}

}  // namespace

std::vector<JSONLines::GrowingText> JSONLines::takeTexts(ThreadItem& item) {
  std::vector<GrowingText> texts;
  const auto take = [&](std::string_view member, SharedText& text) {
    texts.push_back({member, std::nullopt, std::exchange(text, SharedText())});
  };
  const auto takeAll = [&](std::string_view member, std::vector<SharedText>& parts) {
    for (std::size_t index = 0; index < parts.size(); ++index) texts.push_back({member, index, parts[index]});
    parts.clear();
  };
  visit(
      item, [&](AgentMessageItem& message) { take("text", message.text); },
      [&](PlanItem& plan) { take("text", plan.text); },
      [&](ReasoningItem& reasoning) {
        takeAll("summary", reasoning.summary);
        takeAll("content", reasoning.content);
      },
      [&](CommandExecutionItem& command) { take("aggregated_output", command.aggregatedOutput); }, [](auto&) {});
  return texts;
}

void JSONLines::write(const ThreadEvent& event) {
  if (updates_ == JSONUpdates::full) {
    console_.line(encode(event).encode());
  } else {
    visit(event, [this](const auto& any) { writeEvent(any); });
  }
}

void JSONLines::endOperation() {
  items_.clear();
  written_.clear();
}

template <typename Event>
void JSONLines::writeEvent(const Event& event) {
  console_.line(encode(ThreadEvent(event)).encode());
}

void JSONLines::writeEvent(const ItemStartedEvent& event) {
  ItemStartedEvent rest = event;
  const auto texts = takeTexts(rest.item);
  items_[event.item.id()] = encode(rest.item).encode();
  console_.line(encode(ThreadEvent(rest)).encode());
  writeTexts(event.item.id(), texts, false);
}

void JSONLines::writeEvent(const ItemUpdatedEvent& event) {
  ItemUpdatedEvent rest = event;
  const auto texts = takeTexts(rest.item);
  std::string item = encode(rest.item).encode();
  std::string& written = items_[event.item.id()];
  if (item != written) {
    console_.line(encode(ThreadEvent(rest)).encode());
    written = std::move(item);
  }
  writeTexts(event.item.id(), texts, false);
}

void JSONLines::writeEvent(const ItemCompletedEvent& event) {
  ItemCompletedEvent rest = event;
  const auto texts = takeTexts(rest.item);
  writeTexts(event.item.id(), texts, true);
  items_.erase(event.item.id());
  std::size_t all = 0;
  std::map<std::string_view, std::size_t> sizes;
  for (const auto& text : texts) {
    all += text.text.size();
    sizes[text.member] += text.text.size();
  }
  console_.line((all <= longestPiece ? encode(ThreadEvent(event)) : withSizes(rest, sizes)).encode());
}

void JSONLines::writeTexts(const std::string& itemID, const std::vector<GrowingText>& texts, bool areFinal) {
  for (const auto& text : texts) {
    const std::string key = text.keyIn(itemID);
    const bool replaces = areFinal && written_.isContradicted(key, text.text);
    const auto news = areFinal ? written_.completed(key, text.text) : written_.gained(key, text.text);
    writeText(itemID, text, news, replaces);
  }
}

void JSONLines::writeText(const std::string& itemID, const GrowingText& text, std::string_view news, bool replaces) {
  while (replaces || !news.empty()) {
    const auto piece = nextPiece(news);
    JSONObjectBuilder line;
    line.set("type", JSONValue("item.delta")).set("item_id", JSONValue(itemID)).set("member", JSONValue(text.member));
    if (text.index) line.set("index", JSONValue(*text.index));
    if (replaces) line.set("replaces", JSONValue(true));
    line.set("delta", JSONValue(piece));
    console_.line(line.build().encode());
    news.remove_prefix(piece.size());
    replaces = false;
  }
}

}  // namespace ormel::chat
