#include "ormel-simulator/Machine/Commands/RunningCommands.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ormel::simulator {

Command& RunningCommands::start(const CommandLaunch& launch, std::optional<std::chrono::milliseconds> timeLimit,
                                Command::OutputHandler onOutput, EndHandler onEnd) {
  running_.push_back({std::make_unique<Command>(launch, timeLimit, std::move(onOutput)), std::move(onEnd)});
  return *running_.back().command;
}

void RunningCommands::addDescriptors(std::vector<pollfd>& descriptors) const {
  for (const Running& running : running_) running.command->addDescriptors(descriptors);
}

std::optional<Command::Clock::time_point> RunningCommands::due() const {
  std::optional<Command::Clock::time_point> first;
  for (const Running& running : running_) {
    const auto due = running.command->due();
    if (due && (!first || *due < *first)) first = due;
  }
  return first;
}

void RunningCommands::serve() {
  for (const Running& running : running_) running.command->serve();
  const auto ended = std::stable_partition(running_.begin(), running_.end(),
                                           [](const Running& running) { return !running.command->result(); });
  std::vector<Running> over(std::make_move_iterator(ended), std::make_move_iterator(running_.end()));
  running_.erase(ended, running_.end());
  for (const Running& running : over) running.onEnd(*running.command->result());
}

}  // namespace ormel::simulator
