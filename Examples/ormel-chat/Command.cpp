#include "Command.h"

#include <array>
#include <utility>

#include "Texts.h"

namespace ormel::chat {

namespace {

constexpr std::array<std::pair<std::string_view, Command::Kind>, 11> commands{{
    {"/review", Command::Kind::review},
    {"/compact", Command::Kind::compact},
    {"/side", Command::Kind::side},
    {"/steer", Command::Kind::steer},
    {"/threads", Command::Kind::threads},
    {"/resume", Command::Kind::resume},
    {"/name", Command::Kind::name},
    {"/fork", Command::Kind::fork},
    {"/archive", Command::Kind::archive},
    {"/help", Command::Kind::help},
    {"/quit", Command::Kind::quit},
}};

}  // namespace

bool isAboutThreads(Command::Kind kind) {
  switch (kind) {
    case Command::Kind::threads:
    case Command::Kind::resume:
    case Command::Kind::name:
    case Command::Kind::fork:
    case Command::Kind::archive:
      return true;
    default:
      return false;
  }
}

Command readCommand(std::string_view line) {
  const auto text = trimmed(line);
  if (text.empty()) return {};
  const auto name = text.substr(0, text.find_first_of(" \t\n"));
  // A path is no command.
  if (name.front() != '/' || name.find('/', 1) != name.npos) return {Command::Kind::prompt, std::string(text)};
  for (const auto& [known, kind] : commands) {
    if (name == known) return {kind, std::string(trimmed(text.substr(name.size())))};
  }
  return {Command::Kind::unknown, std::string(name)};
}

std::string_view helpText() {
  return "/review [instructions]  review the changes that are not committed, or what you say\n"
         "/compact                shorten the history\n"
         "/side text              ask beside the conversation; it is forgotten afterwards\n"
         "/steer text             tell the agent something while it works; so does a line typed meanwhile\n"
         "/threads                list the conversations that the server keeps\n"
         "/resume [id]            go on with one of them; without an id you choose from a list\n"
         "/name text              give this conversation a name\n"
         "/fork                   go on in a copy of this conversation\n"
         "/archive                put this conversation away, and begin a new one\n"
         "/help                   this\n"
         "/quit                   leave; so does the end of the input\n"
         "Ctrl-C ends what the agent does; a second one leaves.";
}

}  // namespace ormel::chat
