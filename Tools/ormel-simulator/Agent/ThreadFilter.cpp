#include "ormel-simulator/Agent/ThreadFilter.h"

#include <algorithm>
#include <cctype>

#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

std::string inLowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return text;
}

/// The texts of a list; a single text is a list of one.
std::set<std::string> textsMember(const JSONValue& params, const char* key) {
  std::set<std::string> texts;
  const JSONValue value = anyMember(params, key);
  if (const auto text = value.stringValue()) texts.emplace(*text);
  if (const auto* elements = value.arrayValue()) {
    for (const JSONValue& element : *elements) texts.emplace(element.stringValue().value_or(""));
  }
  return texts;
}

bool letsPass(const std::set<std::string>& allowed, const std::string& text) {
  return allowed.empty() || allowed.contains(text);
}

}  // namespace

ThreadFilter::ThreadFilter(const JSONValue& params)
    : archived_(flagMember(params, "archived")),
      modelProviders_(textsMember(params, "modelProviders")),
      sourceKinds_(textsMember(params, "sourceKinds")),
      directories_(textsMember(params, "cwd")),
      searchTerm_(inLowerCase(textMember(params, "searchTerm").value_or(""))) {}

bool ThreadFilter::lets(const AgentThread& thread) const {
  return thread.archived == archived_ && letsPass(modelProviders_, thread.choices.modelProvider) &&
         letsPass(sourceKinds_, AgentThread::source) && letsPass(directories_, thread.choices.cwd) &&
         hasSearchTerm(thread);
}

bool ThreadFilter::hasSearchTerm(const AgentThread& thread) const {
  const auto contains = [this](const std::string& text) { return inLowerCase(text).find(searchTerm_) != text.npos; };
  return contains(thread.name.value_or("")) ||
         std::any_of(thread.turns.begin(), thread.turns.end(),
                     [&](const AgentTurnRecord& turn) { return contains(turn.prompt().value_or("")); });
}

}  // namespace ormel::simulator
