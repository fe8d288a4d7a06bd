#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Console.h"
#include "Options.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "ShownTexts.h"

namespace ormel::chat {

/// Writes the events of an operation for a program, one line of JSON each. With `JSONUpdates::deltas`, the texts that
/// grow go out piece by piece, so that all lines together take as much as the texts, and no line is longer than a
/// piece and the rest of its item.
class JSONLines {
 public:
  JSONLines(Console& console, JSONUpdates updates) : console_(console), updates_(updates) {}

  void write(const ThreadEvent& event);

  /// Forgets the items that will not be completed.
  void endOperation();

 private:
  struct GrowingText;

  template <typename Event>
  void writeEvent(const Event& event);
  void writeEvent(const ItemStartedEvent& event);
  void writeEvent(const ItemUpdatedEvent& event);
  void writeEvent(const ItemCompletedEvent& event);
  void writeTexts(const std::string& itemID, const std::vector<GrowingText>& texts, bool areFinal);
  void writeText(const std::string& itemID, const GrowingText& text, std::string_view news, bool replaces);
  static std::vector<GrowingText> takeTexts(ThreadItem& item);

  Console& console_;
  JSONUpdates updates_;
  ShownTexts written_;
  /// By the id of an item, what was written of it last, but for its growing texts.
  std::map<std::string, std::string> items_;
};

}  // namespace ormel::chat
