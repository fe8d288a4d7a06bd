#pragma once

#include <map>
#include <string>
#include <string_view>

#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel {

/// The piece that an event adds to the text of an item.
struct NewText {
  /// Empty if the event adds none. It lies in the event, and is valid as long as the event or a copy of it is.
  std::string_view text;
  /// The item's text was replaced: `text` is all of it, and what was told of the item before is void. So it is if the
  /// final text says something else than the pieces did.
  bool replaces = false;
  /// The item is complete: there is no more text of it.
  bool isComplete = false;

  friend bool operator==(const NewText&, const NewText&) = default;
};

/// Tells what is new in events whose items come whole each time, as `ItemUpdatedEvent` does: each piece of a text once.
///
///     TextNews news;
///     while (auto event = co_await turn.events.next()) std::cout << news.ofMessage(*event).text << std::flush;
///
/// Events that are of another kind, or of another item, have no news.
///
/// *Cost*: an update costs time in proportion to its own piece, not to the text; a text is kept as a handle, until its
/// item is complete.
///
/// *Thread safety*: used by one thread at a time.
class TextNews {
 public:
  /// News of the agent's messages.
  NewText ofMessage(const ThreadEvent& event);

  /// News of the output of commands.
  NewText ofCommandOutput(const ThreadEvent& event);

 private:
  NewText of(const std::string& itemID, const SharedText& text, bool isComplete);

  std::map<std::string, SharedText> told_;
};

}  // namespace ormel
