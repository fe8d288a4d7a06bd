#include "ApprovalQuestion.h"

#include <algorithm>

#include "Texts.h"

namespace ormel::chat {

namespace {

std::optional<Verdict> verdictOf(std::string word) {
  std::transform(word.begin(), word.end(), word.begin(), [](unsigned char letter) {
    return static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + 32 : letter);
  });
  if (word == "y" || word == "yes") return Verdict::yes;
  if (word == "a" || word == "always") return Verdict::always;
  if (word.empty() || word == "n" || word == "no") return Verdict::no;
  return std::nullopt;
}

}  // namespace

void ApprovalQuestion::ask(Console& console) const {
  console.separate();
  console.line(subject_.title, Style::yellow);
  for (const auto& detail : subject_.details) console.line("  " + detail);
  console.write(subject_.mayBeAlways ? "Allow it? y/n/always [n] " : "Allow it? y/n [n] ", Style::bold);
}

bool ApprovalQuestion::answer(const std::optional<std::string>& line, bool canAskAgain) {
  auto verdict = line ? verdictOf(std::string(trimmed(*line))) : Verdict::no;
  if (!verdict && canAskAgain) return false;
  if (verdict == Verdict::always && !subject_.mayBeAlways) verdict = Verdict::yes;
  verdict_.resume(verdict.value_or(Verdict::no));
  return true;
}

}  // namespace ormel::chat
