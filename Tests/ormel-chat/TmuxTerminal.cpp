#include "ormel-chat/TmuxTerminal.h"

#include <stdio.h>

#include <fstream>
#include <memory>
#include <stdexcept>

#include "Support/Eventually.h"

namespace ormel::chat {

namespace {

/// As one word for the shell.
std::string quoted(const std::string& text) {
  std::string word = "'";
  for (const char character : text) word += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return word + "'";
}

}  // namespace

TmuxTerminal::TmuxTerminal(const std::string& command) {
  // It stays until it is killed, so that what it shows at the end can be read.
  const std::string script = command + "; echo ended with $?; exec cat";
  run("new-session -d -x 80 -y 24 " + quoted(script));
}

TmuxTerminal::~TmuxTerminal() {
  try {
    run("kill-server");
  } catch (const std::exception&) {
    // It has ended by itself.
  }
}

void TmuxTerminal::type(const std::string& text) const { run("send-keys -l " + quoted(text)); }

void TmuxTerminal::paste(const std::string& text) const {
  std::ofstream(folder_ / "clipboard", std::ios::binary) << text;
  run("load-buffer " + quoted(folder_ / "clipboard"));
  run("paste-buffer -p");
}

void TmuxTerminal::press(const std::string& key) const { run("send-keys " + key); }

void TmuxTerminal::resize(int columns, int rows) const {
  run("resize-window -x " + std::to_string(columns) + " -y " + std::to_string(rows));
}

bool TmuxTerminal::shows(std::string_view expected) const {
  return testing::eventually([&] { return text().find(expected) != std::string::npos; });
}

std::string TmuxTerminal::run(const std::string& command) const {
  const std::string whole = "tmux -u -f /dev/null -S " + quoted(folder_ / "socket") + " " + command;
  const auto close = [](FILE* stream) { ::pclose(stream); };
  const std::unique_ptr<FILE, decltype(close)> stream(::popen(whole.c_str(), "r"), close);
  if (!stream) throw std::runtime_error("tmux cannot be run");
  std::string output;
  char block[4096];
  for (std::size_t count = 0; (count = ::fread(block, 1, sizeof block, stream.get())) > 0;) output.append(block, count);
  return output;
}

}  // namespace ormel::chat
