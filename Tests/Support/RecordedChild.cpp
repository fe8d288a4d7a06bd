#include "Support/RecordedChild.h"

#include "Support/Eventually.h"

namespace ormel::testing {

using detail::ByteBuffer;
using detail::LaunchSettings;
using detail::PipeReadHandlers;
using detail::Termination;

LaunchSettings shell(std::string script) {
  LaunchSettings settings;
  settings.executable = "/bin/sh";
  settings.arguments = {"-c", std::move(script)};
  return settings;
}

LaunchSettings helper(std::vector<std::string> arguments) {
  LaunchSettings settings;
  settings.executable = ORMEL_CHILD_HELPER;
  settings.arguments = std::move(arguments);
  return settings;
}

bool RecordedChild::Record::waitUntil(const std::function<bool()>& condition) {
  std::unique_lock lock(mutex);
  return changed.wait_for(lock, patience, condition);
}

RecordedChild::RecordedChild(detail::ProcessLauncher& launcher, const LaunchSettings& settings, Reading reading) {
  child_ = launcher.launch(settings, [record = record_](const Termination& termination) {
    const std::lock_guard lock(record->mutex);
    ++record->terminations;
    record->termination = termination;
    record->changed.notify_all();
  });
  if (reading == Reading::atOnce) startReading();
}

void RecordedChild::startReading() {
  PipeReadHandlers output;
  output.onReadStart = [record = record_] {
    const std::lock_guard lock(record->mutex);
    record->calls.push_back("start");
  };
  output.onChunk = [record = record_](const ByteBuffer& chunk) {
    const std::lock_guard lock(record->mutex);
    record->calls.push_back("chunk");
    record->output += chunk.view();
    record->changed.notify_all();
  };
  output.onNothing = [record = record_] {
    const std::lock_guard lock(record->mutex);
    record->calls.push_back("nothing");
  };
  output.onEnd = [record = record_] {
    const std::lock_guard lock(record->mutex);
    record->calls.push_back("end");
    record->outputEnded = true;
    record->changed.notify_all();
  };
  PipeReadHandlers error;
  error.onChunk = [record = record_](const ByteBuffer& chunk) {
    const std::lock_guard lock(record->mutex);
    record->errorOutput += chunk.view();
  };
  error.onEnd = [record = record_] {
    const std::lock_guard lock(record->mutex);
    record->errorOutputEnded = true;
    record->changed.notify_all();
  };
  child_->output()->start(std::move(output));
  child_->errorOutput()->start(std::move(error));
}

std::optional<Termination> RecordedChild::waitForTermination() {
  if (!record_->waitUntil([this] { return record_->terminations > 0; })) return std::nullopt;
  return record_->termination;
}

bool RecordedChild::waitForOutput(const std::string& text) {
  return record_->waitUntil([this, &text] { return record_->output.find(text) != std::string::npos; });
}

bool RecordedChild::waitForEndOfOutput() {
  return record_->waitUntil([this] { return record_->outputEnded; });
}

bool RecordedChild::waitForEndOfErrorOutput() {
  return record_->waitUntil([this] { return record_->errorOutputEnded; });
}

std::optional<std::string> RecordedChild::wholeOutput() {
  if (!waitForEndOfOutput()) return std::nullopt;
  return output();
}

std::optional<std::string> RecordedChild::wholeErrorOutput() {
  if (!waitForEndOfErrorOutput()) return std::nullopt;
  const std::lock_guard lock(record_->mutex);
  return record_->errorOutput;
}

std::string RecordedChild::output() {
  const std::lock_guard lock(record_->mutex);
  return record_->output;
}

int RecordedChild::terminations() {
  const std::lock_guard lock(record_->mutex);
  return record_->terminations;
}

std::vector<std::string> RecordedChild::calls() {
  const std::lock_guard lock(record_->mutex);
  return record_->calls;
}

}  // namespace ormel::testing
