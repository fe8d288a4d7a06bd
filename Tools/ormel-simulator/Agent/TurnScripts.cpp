#include "ormel-simulator/Agent/TurnScripts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>

#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Agent/RequestScripts.h"
#include "ormel-simulator/Agent/TalkScripts.h"

namespace ormel::simulator {

namespace {

constexpr std::array scripts = {
    TurnScript{"run", "COMMAND", "asks for approval of the command, then pretends to run it", playCommand},
    TurnScript{"list files", "", "the same, with the command \"ls\"", playListFiles},
    TurnScript{"edit", "FILE", "asks for approval of a change of the file, then pretends to make it", playEdit},
    TurnScript{"write", "FILE", "the same, with a new file", playWrite},
    TurnScript{"ask", "", "asks the user two questions, and uses the answers", playQuestions},
    TurnScript{"use tool", "[NAME]", "calls that tool of the application, or its first one", playTool},
    TurnScript{"mcp", "", "has an MCP server ask the user to fill in a form", playForm},
    TurnScript{"form", "", "the same", playForm},
    TurnScript{"permissions", "", "asks for permissions", playPermissions},
    TurnScript{"sign in", "", "asks for fresh account tokens; fails the turn without", playSignIn},
    TurnScript{"attest", "", "asks for an attestation token", playAttestation},
    TurnScript{"search", "WORDS", "pretends to search the web", playSearch},
    TurnScript{"look up", "WORDS", "pretends to call a tool of an MCP server, which reports its progress", playLookUp},
    TurnScript{"fail", "", "fails the turn", playFailure},
    TurnScript{"error", "", "reports an error, and goes on", playError},
    TurnScript{"warn", "", "warns, and goes on", playWarning},
    TurnScript{"slow", "", "talks in small pieces until it is interrupted", playSlowAnswer},
    TurnScript{"crash", "", "writes to standard error and exits with status 3", playCrash},
    TurnScript{"json", "", "answers with a JSON object", playJSONAnswer},
    TurnScript{"big", "N", "runs a command with N megabytes of output, as fast as they are taken", playBigOutput},
};

std::string lowercased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return text;
}

bool isWordByte(char byte) { return std::isalnum(static_cast<unsigned char>(byte)) != 0; }

/// Where the words stand in the text, as words of their own.
std::size_t findWords(std::string_view text, std::string_view words) {
  for (std::size_t place = text.find(words); place != std::string_view::npos; place = text.find(words, place + 1)) {
    const std::size_t end = place + words.size();
    const bool begins = place == 0 || !isWordByte(text[place - 1]);
    if (begins && (end == text.size() || !isWordByte(text[end]))) return place;
  }
  return std::string_view::npos;
}

ScriptArgument argumentAt(std::string_view text) {
  const std::string line = trimmed(text.substr(0, text.find('\n')));
  const bool quoted = !line.empty() && std::string_view("`\"'").find(line.front()) != std::string_view::npos;
  const std::size_t end = quoted ? line.find(line.front(), 1) : std::string::npos;
  if (end != std::string::npos) return {line.substr(1, end - 1), line.substr(1, end - 1)};
  const std::string word = line.substr(0, line.find_first_of(" \t"));
  return {line, word.substr(0, word.find_last_not_of(".,;:!?") + 1)};
}

}  // namespace

std::span<const TurnScript> turnScripts() { return scripts; }

void playPrompt(AgentTurn& turn) {
  const std::string prompt = turn.prompt();
  const std::string text = lowercased(prompt);
  const TurnScript* first = nullptr;
  std::size_t firstPlace = std::string::npos;
  for (const TurnScript& script : scripts) {
    const std::size_t place = findWords(text, script.words);
    if (place >= firstPlace) continue;
    first = &script;
    firstPlace = place;
  }
  if (!first) return playPlainAnswer(turn);
  first->play(turn, argumentAt(std::string_view(prompt).substr(firstPlace + first->words.size())));
}

std::string turnScriptsHelp() {
  constexpr std::size_t column = 18;
  std::string text;
  for (const TurnScript& script : scripts) {
    std::string words = "  " + std::string(script.words);
    if (!script.argument.empty()) words.append(" ").append(script.argument);
    words.resize(std::max(words.size() + 1, column), ' ');
    text.append(words).append(script.effect).append("\n");
  }
  return text;
}

}  // namespace ormel::simulator
