// The other end of the measurements: a server that costs as little as possible, so that what is measured is the client.
//
//   conversation-server app-server ...     speaks the protocol; the prompt of a turn is a workload
//   conversation-server mcp                the same turns for a client of the Model Context Protocol
//   conversation-server bare WORKLOAD      writes what the workload writes, without a protocol
//   conversation-server bare ping BYTES    answers each line with one of so many bytes

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "JSONSamples.h"
#include "Lines.h"

namespace {

using ormel::benchmarks::monotonicNanoseconds;

void writeAll(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (written <= 0) std::_Exit(EXIT_FAILURE);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

/// The first member of each message of a protocol that wants its version there.
std::string_view versionMember;

std::string withVersion(std::string_view message) {
  return std::string("{").append(versionMember).append(message.substr(1));
}

const std::string& deltaLine() {
  static const std::string line = withVersion(ormel::benchmarks::notificationLine()) + '\n';
  return line;
}

/// The next line of standard input with its line feed; the program ends with the input.
std::string_view nextLine() {
  static std::string pending;
  static std::size_t used = 0;
  pending.erase(0, used);
  std::size_t scanned = 0;
  for (;;) {
    const std::size_t end = pending.find('\n', scanned);
    if (end != std::string::npos) {
      used = end + 1;
      return std::string_view(pending).substr(0, used);
    }
    scanned = pending.size();
    char block[1 << 16];
    const ssize_t got = ::read(STDIN_FILENO, block, sizeof block);
    if (got <= 0) std::exit(EXIT_SUCCESS);
    pending.append(block, static_cast<std::size_t>(got));
  }
}

void pause(std::uint64_t nanoseconds) {
  const timespec time{static_cast<time_t>(nanoseconds / 1'000'000'000), static_cast<long>(nanoseconds % 1'000'000'000)};
  ::nanosleep(&time, nullptr);
}

/// Many lines a write.
void writeBlocks(std::uint64_t lines) {
  constexpr std::uint64_t linesOfBlock = 256;
  std::string block;
  for (std::uint64_t line = 0; line < linesOfBlock; ++line) block += deltaLine();
  for (; lines >= linesOfBlock; lines -= linesOfBlock) writeAll(block);
  for (; lines > 0; --lines) writeAll(deltaLine());
}

void writeLines(std::uint64_t lines) {
  for (; lines > 0; --lines) writeAll(deltaLine());
}

/// Single lines that say when they were written, with everything asleep in between.
void writeClock(std::uint64_t lines) {
  for (; lines > 0; --lines) {
    pause(1'000'000);
    writeAll(ormel::benchmarks::clockLine(monotonicNanoseconds()));
  }
}

void writeCommandOutput(std::uint64_t bytes) {
  writeAll(ormel::benchmarks::commandStartedLine());
  const std::string line = ormel::benchmarks::commandOutputLine();
  std::string block;
  constexpr std::uint64_t linesOfBlock = 16;
  for (std::uint64_t count = 0; count < linesOfBlock; ++count) block += line;
  constexpr std::uint64_t bytesOfBlock = linesOfBlock * ormel::benchmarks::commandOutputBytes;
  for (std::uint64_t written = 0; written < bytes; written += bytesOfBlock) writeAll(block);
}

/// Calculates until nobody is there any more for whom it does.
void keepBusy(std::uint64_t) {
  constexpr int calculationsBetweenLooks = 1 << 24;
  const pid_t parent = ::getppid();
  volatile std::uint64_t number = 1;
  while (::getppid() == parent) {
    for (int count = 0; count < calculationsBetweenLooks; ++count) number = number * 6364136223846793005U + 1;
  }
}

struct Workload {
  std::string_view name;
  void (*write)(std::uint64_t amount);
};

constexpr Workload workloads[] = {
    {"blocks", writeBlocks},           {"lines", writeLines}, {"clock", writeClock}, {"output", writeCommandOutput},
    {"nothing", [](std::uint64_t) {}}, {"busy", keepBusy},
};

void perform(std::string_view name, std::uint64_t amount) {
  for (const Workload& workload : workloads) {
    if (workload.name == name) return workload.write(amount);
  }
  std::fprintf(stderr, "unknown workload %.*s\n", static_cast<int>(name.size()), name.data());
  std::_Exit(EXIT_FAILURE);
}

/// Performs "NAME AMOUNT".
void performPrompt(const std::string& prompt) {
  const std::size_t blank = prompt.find(' ');
  if (blank == std::string::npos) return perform(prompt, 0);
  perform(std::string_view(prompt).substr(0, blank), std::strtoull(prompt.c_str() + blank, nullptr, 10));
}

std::string_view textAfter(std::string_view line, std::string_view key) {
  const std::size_t at = line.find(key);
  if (at == std::string_view::npos) return {};
  const std::size_t start = at + key.size();
  return line.substr(start, line.find_first_of("\",}", start) - start);
}

void answer(std::string_view line, std::string_view result) {
  std::string reply = withVersion(R"({"id":)");
  reply += textAfter(line, R"("id":)");
  reply += R"(,"result":)";
  reply += result;
  reply += "}\n";
  writeAll(reply);
}

std::string turnMember(const std::string& status) {
  return R"("turn":{"id":")" + ormel::benchmarks::turnID + R"(","status":")" + status + "\"}";
}

void endTurn() { writeAll(ormel::benchmarks::notification("turn/completed", turnMember("completed"))); }

/// A prompt is "NAME AMOUNT"; "held 0" leaves the turn open until it is steered with "end".
void playTurn(std::string_view line) {
  const std::string prompt(textAfter(line, R"("text":")"));
  answer(line, '{' + turnMember("inProgress") + '}');
  writeAll(ormel::benchmarks::notification("turn/started", turnMember("inProgress")));
  if (prompt.starts_with("held")) return;
  performPrompt(prompt);
  endTurn();
}

[[noreturn]] void serve() {
  for (;;) {
    const std::string_view line = nextLine();
    const std::string_view method = textAfter(line, R"("method":")");
    if (method == "turn/steer") {
      const bool last = textAfter(line, R"("text":")") == "end";
      answer(line, R"({"turnId":")" + ormel::benchmarks::turnID + "\"}");
      if (last) endTurn();
    } else if (method == "turn/start") {
      playTurn(line);
    } else if (method == "thread/start" || method == "thread/resume") {
      answer(line, R"({"thread":{"id":")" + ormel::benchmarks::threadID + "\"}}");
    } else if (line.find(R"("id":)") != std::string_view::npos) {
      answer(line, "{}");
    }
  }
}

/// The answer to "turn/start" follows the notifications of the turn.
[[noreturn]] void serveModelContextProtocol() {
  versionMember = R"("jsonrpc":"2.0",)";
  for (;;) {
    const std::string line(nextLine());
    const std::string_view method = textAfter(line, R"("method":")");
    if (method == "initialize") {
      const std::string version(textAfter(line, R"("protocolVersion":")"));
      answer(line, R"({"protocolVersion":")" + version +
                       R"(","capabilities":{},"serverInfo":{"name":"conversation-server","version":"1"}})");
    } else if (method == "turn/start") {
      performPrompt(std::string(textAfter(line, R"("text":")")));
      answer(line, "{}");
    } else if (method == "turn/steer") {
      answer(line, R"({"turnId":")" + ormel::benchmarks::turnID + "\"}");
    } else if (line.find(R"("id":)") != std::string::npos) {
      answer(line, "{}");
    }
  }
}

[[noreturn]] void playPing(std::size_t bytes) {
  const std::string reply = std::string(bytes - 1, 'x') + '\n';
  for (;;) {
    nextLine();
    writeAll(reply);
  }
}

}  // namespace

int main(int count, char** texts) {
  if (count == 2 && std::strcmp(texts[1], "mcp") == 0) serveModelContextProtocol();
  if (count < 4 || std::strcmp(texts[1], "bare") != 0) serve();
  const auto amount = static_cast<std::uint64_t>(std::strtoull(texts[3], nullptr, 10));
  if (std::strcmp(texts[2], "ping") == 0) playPing(static_cast<std::size_t>(amount));
  perform(texts[2], amount);
}
