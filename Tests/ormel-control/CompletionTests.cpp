#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "ormel-control/ControlProgram.h"

namespace ormel::control {
namespace {

using ::testing::HasSubstr;
using ::testing::IsSupersetOf;

/// The script for a shell, in a folder of its own with a file named "files".
class CompletionScript {
 public:
  explicit CompletionScript(const std::string& shell) {
    const ControlEnd end = Agent().control({"completion", shell});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
    text = end.output;
    // By the name under which zsh looks for it.
    folder_.addFile("_ormel_control", text);
    folder_.addFile("place/files");
  }

  std::string folder() const { return folder_.path(); }
  std::string path() const { return folder_ / "_ormel_control"; }
  /// The directory to be in when files are offered.
  std::string place() const { return folder_ / "place"; }

  std::string text;

 private:
  testing::TemporaryDirectory folder_;
};

ControlEnd endOf(const std::string& shell, std::vector<std::string> arguments) {
  const testing::TemporaryDirectory home;
  testing::ChildOptions options;
  options.arguments = std::move(arguments);
  options.environment = {"PATH=/usr/bin:/bin", "HOME=" + home.path().string()};
  testing::ChildProgram child(shell, options);
  ControlEnd end;
  end.output = child.readRestOfOutput();
  end.errors = child.readErrors();
  end.status = child.wait().status.value_or(-1);
  return end;
}

/// The first words of the lines that a shell prints.
std::set<std::string> printedBy(const std::string& shell, std::vector<std::string> arguments) {
  const ControlEnd end = endOf(shell, std::move(arguments));
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.status, 0);
  std::istringstream lines(end.output);
  std::set<std::string> words;
  for (std::string line; std::getline(lines, line);) {
    const std::string word = line.substr(0, line.find('\t'));
    if (!word.empty()) words.insert(word);
  }
  return words;
}

/// A shell, and the completions that it offers for the last of some words.
struct Shell {
  const char* name;
  const char* executable;
  std::vector<std::string> parseOnly;
  std::set<std::string> (*offered)(const CompletionScript& script, const std::string& words);
};

std::set<std::string> offeredByBash(const CompletionScript& script, const std::string& words) {
  return printedBy(
      "/bin/bash",
      {"--norc", "-c",
       "compopt() { echo files; }\nsource " + script.path() + "\nCOMP_WORDS=(ormel-control " + words +
           ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_ormel_control\nprintf '%s\\n' \"${COMPREPLY[@]}\""});
}

// Without a terminal, so that the functions with which zsh takes what is offered are played.
#ifdef ORMEL_ZSH
constexpr const char* playedZsh =
    "_files() { print -r -- files; }\n"
    "compdef() { print -r -- \"$1 for $2\"; }\n"
    "compadd() { shift; for word; do [[ $word == ${words[CURRENT]}* ]] && print -r -- $word; done; true; }\n";

std::set<std::string> offeredByZsh(const CompletionScript& script, const std::string& words) {
  return printedBy(ORMEL_ZSH, {"-f", "-c",
                               playedZsh + ("source " + script.path()) + " >/dev/null\nwords=(ormel-control " + words +
                                   ")\nCURRENT=${#words}\n_ormel_control"});
}
#endif

#ifdef ORMEL_FISH
std::set<std::string> offeredByFish(const CompletionScript& script, const std::string& words) {
  const bool isNew = words.ends_with("''");
  const std::string line = "ormel-control " + (isNew ? words.substr(0, words.size() - 2) : words);
  return printedBy(ORMEL_FISH, {"--no-config", "-c",
                                "cd " + script.place() + "\nsource " + script.path() + "\ncomplete -C '" + line + "'"});
}
#endif

/// The installed shells; bash is always one of them.
const Shell shells[] = {
    {"bash", "/bin/bash", {"--norc", "-n"}, offeredByBash},
#ifdef ORMEL_ZSH
    {"zsh", ORMEL_ZSH, {"-f", "-n"}, offeredByZsh},
#endif
#ifdef ORMEL_FISH
    {"fish", ORMEL_FISH, {"--no-config", "-n"}, offeredByFish},
#endif
};

TEST(ControlCompletion, IsAScriptThatItsShellReads) {
  for (const Shell& shell : shells) {
    SCOPED_TRACE(shell.name);
    const CompletionScript script(shell.name);
    auto arguments = shell.parseOnly;
    arguments.push_back(script.path());
    const ControlEnd end = endOf(shell.executable, arguments);
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
  }
  EXPECT_THAT(CompletionScript("bash").text, HasSubstr("complete -F _ormel_control ormel-control\n"));
}

TEST(ControlCompletion, OffersWhatMayComeNext) {
  const struct {
    const char* words;
    std::set<std::string> offered;
  } rows[] = {
      {"mo", {"models"}},
      {"thread", {"thread", "threads"}},
      {"thread re", {"read", "rename"}},
      {"thread rename x --j", {"--json"}},
      {"models --a", {"--all"}},
      {"--json threads --", {"--search", "--archived", "--help", "--server", "--ormel", "--json", "--cd"}},
      {"--server x completion z", {"zsh"}},
      {"config s", {"set"}},
      {"--server ''", {"files"}},
      {"--cd models th", {"thread", "threads"}},
      {"files cat ''", {"files"}},
      {"files cat --js", {"--json"}},
      {"exec -- ls ''", {"files"}},
      {"threads --search x --arch", {"--archived"}},
      {"nonsen", {}},
  };
  for (const Shell& shell : shells) {
    SCOPED_TRACE(shell.name);
    const CompletionScript script(shell.name);
    for (const auto& row : rows) EXPECT_EQ(shell.offered(script, row.words), row.offered) << row.words;
    EXPECT_THAT(shell.offered(script, "''"), IsSupersetOf({"models", "watch", "exec", "usage", "--json"}));
  }
}

#ifdef ORMEL_ZSH
TEST(ControlCompletion, IsRegisteredInZshWhenItIsReadAndIsAFunctionOfItsOwnOnTheSearchPath) {
  const CompletionScript script("zsh");
  EXPECT_EQ(printedBy(ORMEL_ZSH, {"-f", "-c", playedZsh + ("source " + script.path())}),
            (std::set<std::string>{"_ormel_control for ormel-control"}));
  EXPECT_EQ(printedBy(ORMEL_ZSH, {"-f", "-c",
                                  playedZsh + ("fpath=(" + script.folder()) +
                                      ")\nautoload -U _ormel_control\nwords=(ormel-control mo)\nCURRENT=2\n"
                                      "_ormel_control"}),
            (std::set<std::string>{"models"}));
}
#endif

TEST(ControlCompletion, KnowsAllCommandsInEachShell) {
  for (const char* shell : {"bash", "zsh", "fish"}) {
    const CompletionScript script(shell);
    for (const char* word : {"models",  "threads", "thread", "skills",     "hooks",       "apps",     "mcp",
                             "plugins", "account", "usage",  "config",     "permissions", "features", "files",
                             "exec",    "call",    "watch",  "completion", "unarchive",   "--search"}) {
      EXPECT_THAT(script.text, HasSubstr(word)) << shell;
    }
  }
}

}  // namespace
}  // namespace ormel::control
