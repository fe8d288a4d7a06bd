#pragma once

#include <cstddef>
#include <string_view>

namespace ormel::chat {

/// The first character of a text in UTF-8, or its first byte if no character begins there.
struct Character {
  char32_t code = 0;
  std::size_t size = 1;
  bool isValid = true;
};

/// For a text that is not empty.
Character firstCharacter(std::string_view text);

/// Whether a reader would not see it for what it is: control characters, those that change the direction of writing,
/// that have no width or no form, that end a line or only look like a space.
bool isHidden(char32_t code);

/// Whether a terminal might obey it, or show other characters in another place for it. Tabs and line feeds are
/// harmless, and so are joiners that emoji and some scripts are written with.
bool isHarmful(char32_t code);

/// Whether it might be taken for the margin of what asks.
bool looksLikeMargin(char32_t code);

/// Whether it is drawn into the character before it.
bool isCombining(char32_t code);

/// Whether it is drawn over the character before it, which then looks like another one.
bool isOverlay(char32_t code);

/// Whether it is written from right to left.
bool isRightToLeft(char32_t code);

/// Columns that it takes in a terminal: 0, 1 or 2.
int columnsOf(char32_t code);

}  // namespace ormel::chat
