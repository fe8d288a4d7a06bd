#include "ormel-simulator/Machine/Search/FuzzyMatch.h"

#include <algorithm>
#include <string>

namespace ormel::simulator {

namespace {

constexpr int worthOfMatch = 16;
constexpr int worthOfFollowing = 12;
constexpr int worthOfWordStart = 8;
constexpr int worthInFileName = 4;
constexpr int impossible = -1;

/// The characters, each one as its bytes.
std::vector<std::string_view> charactersOf(std::string_view text) {
  constexpr unsigned char leadingBits = 0xC0;
  constexpr unsigned char continuation = 0x80;
  std::vector<std::string_view> characters;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool goesOn = (static_cast<unsigned char>(text[index]) & leadingBits) == continuation;
    if (goesOn && !characters.empty()) {
      const std::string_view last = characters.back();
      characters.back() = {last.data(), last.size() + 1};
    } else {
      characters.push_back(text.substr(index, 1));
    }
  }
  return characters;
}

bool isUpper(char letter) { return letter >= 'A' && letter <= 'Z'; }
char inLowerCase(char letter) { return isUpper(letter) ? static_cast<char>(letter - 'A' + 'a') : letter; }

bool isSame(std::string_view left, std::string_view right) {
  if (left.size() == 1 && right.size() == 1) return inLowerCase(left[0]) == inLowerCase(right[0]);
  return left == right;
}

/// The worth of a match of each character, whatever comes before it.
std::vector<int> worths(const std::vector<std::string_view>& path) {
  std::vector<int> found(path.size());
  std::size_t fileName = 0;
  for (std::size_t index = 0; index < path.size(); ++index) {
    const std::string_view before = index == 0 ? "/" : path[index - 1];
    const bool startsAfter = before.size() == 1 && std::string_view("/_-. ").find(before) != std::string_view::npos;
    const bool startsByCase = isUpper(path[index][0]) && !isUpper(before[0]);
    found[index] = worthOfMatch + (startsAfter || startsByCase ? worthOfWordStart : 0);
    if (path[index] == "/") fileName = index + 1;
  }
  for (std::size_t index = fileName; index < path.size(); ++index) found[index] += worthInFileName;
  return found;
}

/// The best scores of the beginnings of the query, each one with its last character matched at a place of the path.
class Table {
 public:
  Table(const std::vector<std::string_view>& query, const std::vector<std::string_view>& path)
      : width_(path.size()), scores_(query.size() * path.size(), impossible) {
    const std::vector<int> worth = worths(path);
    for (std::size_t row = 0; row < query.size(); ++row) {
      int before = row == 0 ? 0 : impossible;
      for (std::size_t place = 0; place < width_; ++place) {
        if (row > 0 && place > 0) before = std::max(before, at(row - 1, place - 1));
        if (before == impossible || !isSame(query[row], path[place])) continue;
        at(row, place) = worth[place] + std::max(before, afterNeighbour(row, place));
      }
    }
  }

  /// Where the row's character best matches, before the place; the place itself if nowhere.
  std::size_t best(std::size_t row, std::size_t end) const {
    std::size_t found = end;
    int score = impossible;
    for (std::size_t place = 0; place < end; ++place) {
      const bool follows = place + 1 == end && end < width_;
      const int worth = at(row, place) == impossible ? impossible : at(row, place) + (follows ? worthOfFollowing : 0);
      if (worth <= score) continue;
      score = worth;
      found = place;
    }
    return found;
  }

  int at(std::size_t row, std::size_t place) const { return scores_[row * width_ + place]; }

 private:
  int& at(std::size_t row, std::size_t place) { return scores_[row * width_ + place]; }

  int afterNeighbour(std::size_t row, std::size_t place) const {
    if (row == 0 || place == 0 || at(row - 1, place - 1) == impossible) return impossible;
    return at(row - 1, place - 1) + worthOfFollowing;
  }

  std::size_t width_;
  std::vector<int> scores_;
};

bool hasAllInOrder(const std::vector<std::string_view>& query, const std::vector<std::string_view>& path) {
  std::size_t matched = 0;
  for (const std::string_view character : path) {
    if (matched < query.size() && isSame(query[matched], character)) ++matched;
  }
  return matched == query.size();
}

}  // namespace

std::optional<FuzzyMatch> matchFuzzily(std::string_view query, std::string_view path) {
  const auto wanted = charactersOf(query);
  const auto given = charactersOf(path);
  if (wanted.empty() || !hasAllInOrder(wanted, given)) return std::nullopt;
  const Table table(wanted, given);
  FuzzyMatch match;
  match.indices.resize(wanted.size());
  std::size_t end = given.size();
  for (std::size_t row = wanted.size(); row-- > 0;) {
    // Behind the last character nothing follows that could make a neighbour.
    end = table.best(row, end);
    match.indices[row] = end;
  }
  match.score = table.at(wanted.size() - 1, match.indices.back());
  return match;
}

}  // namespace ormel::simulator
