#include "ormel-simulator/Machine/Commands/Command.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "ormel-simulator/Machine/Commands/PseudoTerminal.h"

namespace ormel::simulator {

namespace {

constexpr std::chrono::milliseconds terminationGrace{500};
constexpr std::size_t pieceOfOutput = 65536;
/// Between two looks at the client.
constexpr std::size_t piecesAtOnce = 4;
/// More than the system lets a pipe hold for a program.
constexpr std::size_t piecesInPipe = 64;
constexpr char endOfTerminalInput = 4;

}  // namespace

Command::Command(const CommandLaunch& launch, std::optional<std::chrono::milliseconds> timeLimit,
                 OutputHandler onOutput)
    : process_(launch), onOutput_(std::move(onOutput)), hasTerminal_(launch.terminal.has_value()) {
  if (timeLimit) timeLimit_ = Clock::now() + *timeLimit;
}

void Command::addDescriptors(std::vector<pollfd>& descriptors) const {
  descriptors.push_back({process_.control(), POLLIN, 0});
  if (process_.output.isOpen()) descriptors.push_back({process_.output.number(), POLLIN, 0});
  if (process_.error.isOpen()) descriptors.push_back({process_.error.number(), POLLIN, 0});
  if (process_.input.isOpen() && !pendingInput_.empty()) descriptors.push_back({process_.input.number(), POLLOUT, 0});
}

std::optional<Command::Clock::time_point> Command::due() const {
  if (timeLimit_ && killTime_) return std::min(*timeLimit_, *killTime_);
  return timeLimit_ ? timeLimit_ : killTime_;
}

void Command::serve() {
  // First the end, then all that was said before it.
  const auto end = process_.takeEnd();
  if (!end) checkTime();
  giveInput();
  const std::size_t pieces = end ? piecesInPipe : piecesAtOnce;
  takeOutput(process_.output, gathered_.output, "stdout", pieces);
  takeOutput(process_.error, gathered_.error, "stderr", pieces);
  if (!end) return;
  gathered_.exitCode = end->exitCode;
  result_ = std::move(gathered_);
}

void Command::giveInput() {
  while (process_.input.isOpen() && !pendingInput_.empty()) {
    const ssize_t count = ::write(process_.input.number(), pendingInput_.data(), pendingInput_.size());
    if (count > 0) pendingInput_.erase(0, static_cast<std::size_t>(count));
    if (count >= 0 || errno == EINTR) continue;
    if (errno == EAGAIN || errno == EWOULDBLOCK) return;
    // Nobody reads any more.
    pendingInput_.clear();
    process_.input.close();
  }
  if (closesInput_) process_.input.close();
}

void Command::takeOutput(detail::FileDescriptor& source, BoundedText& text, std::string_view name, std::size_t pieces) {
  std::array<char, pieceOfOutput> piece;
  for (; source.isOpen() && pieces > 0; --pieces) {
    const ssize_t count = ::read(source.number(), piece.data(), piece.size());
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
    if (count < 0 && errno == EINTR) continue;
    // A terminal that no program has open any more gives an error.
    if (count <= 0) return source.close();
    const bool wasFull = text.isFull();
    const std::string_view kept = text.append({piece.data(), static_cast<std::size_t>(count)});
    if (onOutput_ && !wasFull) onOutput_(name, kept, text.isFull());
  }
}

void Command::checkTime() {
  const auto now = Clock::now();
  const bool isOver = timeLimit_ && *timeLimit_ <= now;
  if (isOver) gathered_.hasTimedOut = true;
  if (isOver || (killTime_ && *killTime_ <= now)) {
    process_.signal(SIGKILL);
    timeLimit_.reset();
    killTime_.reset();
  }
}

void Command::closeInput() {
  // A terminal stays open; a character tells the program that no more will come.
  if (hasTerminal_) {
    pendingInput_ += endOfTerminalInput;
  } else {
    closesInput_ = true;
  }
}

void Command::resize(const TerminalSize& size) {
  if (hasTerminal_) resizeTerminal(process_.output, size);
}

void Command::terminate() {
  process_.signal(SIGTERM);
  if (!killTime_) killTime_ = Clock::now() + terminationGrace;
}

}  // namespace ormel::simulator
