#pragma once

#include <map>
#include <string>
#include <string_view>

#include "OrmelSDK/Text/SharedText.h"

namespace ormel::chat {

/// How much of each growing text has been shown, so that every piece is shown once.
class ShownTexts {
 public:
  /// The part that a text has gained since it was last seen; it stays valid as long as `text`.
  std::string_view gained(const std::string& name, const SharedText& text);

  /// The same for the final state, which may say something else than the pieces did: then all of it is new.
  std::string_view completed(const std::string& name, const SharedText& text);

  /// Whether the text says something else than what was seen of it.
  bool isContradicted(const std::string& name, const SharedText& text) const;

  /// Forgets all texts.
  void clear() { shown_.clear(); }

 private:
  /// Handles, which cost no copy of the text.
  std::map<std::string, SharedText> shown_;
};

}  // namespace ormel::chat
