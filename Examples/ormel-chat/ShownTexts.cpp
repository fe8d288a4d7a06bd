#include "ShownTexts.h"

namespace ormel::chat {

std::string_view ShownTexts::gained(const std::string& name, const SharedText& text) {
  SharedText& shown = shown_[name];
  const std::size_t before = shown.size();
  if (text.size() <= before) return {};
  shown = text;
  return text.view().substr(before);
}

std::string_view ShownTexts::completed(const std::string& name, const SharedText& text) {
  const auto found = shown_.find(name);
  if (found == shown_.end()) return text.view();
  const SharedText shown = found->second;
  shown_.erase(found);
  return text.view().starts_with(shown.view()) ? text.view().substr(shown.size()) : text.view();
}

bool ShownTexts::isContradicted(const std::string& name, const SharedText& text) const {
  const auto found = shown_.find(name);
  return found != shown_.end() && !text.view().starts_with(found->second.view());
}

}  // namespace ormel::chat
