#include "ApprovalQuestion.h"

#include <algorithm>

#include "Texts.h"

namespace ormel::chat {

namespace {

std::string inSmallLetters(std::string_view text) {
  std::string word(text);
  std::transform(word.begin(), word.end(), word.begin(), [](unsigned char letter) {
    return static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + 32 : letter);
  });
  return word;
}

std::optional<Verdict> verdictOf(const std::string& word) {
  if (word == "y" || word == "yes") return Verdict::yes;
  if (word == "a" || word == "always") return Verdict::always;
  if (word.empty() || word == "n" || word == "no") return Verdict::no;
  return std::nullopt;
}

}  // namespace

void ApprovalQuestion::ask(Console& console) const {
  console.separate();
  PromptWriter prompt(console, showsAll_);
  prompt.say(subject_.title, Style::yellow);
  prompt.quote(subject_.matter);
  for (const auto& circumstance : subject_.circumstances) prompt.quote({circumstance});
  prompt.explain();
  if (!subject_.advice.empty()) prompt.say(subject_.advice, Style::yellow);
  std::string words = "Allow it? y/n";
  if (subject_.mayBeAlways) words += "/always";
  if (prompt.hasOmitted()) words += "/view";
  prompt.invite(words + " [n] ");
}

bool ApprovalQuestion::answer(const std::optional<std::string>& line, bool canAskAgain) {
  const std::string word = inSmallLetters(trimmed(line.value_or("")));
  if (word == "v" || word == "view") {
    showsAll_ = true;
    return false;
  }
  auto verdict = verdictOf(word);
  if (!verdict && canAskAgain) return false;
  if (verdict == Verdict::always && !subject_.mayBeAlways) verdict = Verdict::yes;
  verdict_.resume(verdict.value_or(Verdict::no));
  return true;
}

}  // namespace ormel::chat
