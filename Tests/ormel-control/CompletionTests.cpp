#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "ormel-control/ControlProgram.h"

namespace ormel::control {
namespace {

using ::testing::HasSubstr;

/// The script for a shell, in a file of its own.
class CompletionScript {
 public:
  explicit CompletionScript(const std::string& shell) {
    const ControlEnd end = Agent().control({"completion", shell});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
    text = end.output;
    std::ofstream(path()) << text;
  }

  std::string path() const { return folder_ / "script"; }

  std::string text;

 private:
  testing::TemporaryDirectory folder_;
};

ControlEnd bash(std::vector<std::string> arguments) {
  testing::ChildOptions options;
  options.arguments = std::move(arguments);
  options.environment = {"PATH=/usr/bin:/bin"};
  testing::ChildProgram child("/bin/bash", options);
  ControlEnd end;
  end.output = child.readRestOfOutput();
  end.errors = child.readErrors();
  end.status = child.wait().status.value_or(-1);
  return end;
}

/// The completions that bash offers for the last of the words.
std::set<std::string> offered(const CompletionScript& script, const std::string& words) {
  const ControlEnd end =
      bash({"--norc", "-c",
            "compopt() { echo files; }\nsource " + script.path() + "\nCOMP_WORDS=(ormel-control " + words +
                ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_ormel_control\n" + "printf '%s\\n' \"${COMPREPLY[@]}\""});
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.status, 0);
  std::istringstream lines(end.output);
  std::set<std::string> words_;
  for (std::string word; lines >> word;) words_.insert(word);
  return words_;
}

TEST(ControlCompletion, IsAScriptThatBashReads) {
  const CompletionScript script("bash");
  const ControlEnd end = bash({"-n", script.path()});
  EXPECT_EQ(end.status, 0);
  EXPECT_EQ(end.errors, "");
  EXPECT_THAT(script.text, HasSubstr("complete -F _ormel_control ormel-control\n"));
}

TEST(ControlCompletion, OffersWhatMayComeNext) {
  const CompletionScript script("bash");
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
  for (const auto& row : rows) EXPECT_EQ(offered(script, row.words), row.offered) << row.words;
  EXPECT_THAT(offered(script, "''"), ::testing::IsSupersetOf({"models", "watch", "exec", "usage", "--json"}));
}

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
