#include "OrmelSDK/Platform/SystemProcessLauncher.h"

#include <signal.h>

#include <new>

#include "OrmelSDK/Platform/DescriptorReader.h"
#include "OrmelSDK/Platform/DescriptorWriter.h"
#include "OrmelSDK/Platform/IORuntime.h"
#include "OrmelSDK/Platform/TerminationWatch.h"

namespace ormel::detail {

namespace {

class SystemChildProcess final : public ChildProcess {
 public:
  SystemChildProcess(EventLoop& loop, const LaunchSettings& settings, EndNotice notice,
                     TerminationHandler onTermination) {
    Pipe input = makePipe();
    Pipe output = makePipe();
    Pipe error = makePipe();
    input_ = std::make_shared<DescriptorWriter>(loop, std::move(input.writeEnd));
    output_ = std::make_shared<DescriptorReader>(loop, std::move(output.readEnd));
    errorOutput_ = std::make_shared<DescriptorReader>(loop, std::move(error.readEnd));
    const StandardStreams streams{input.readEnd.number(), output.writeEnd.number(), error.writeEnd.number()};
    watch_ = std::make_shared<TerminationWatch>(settings, streams, notice, std::move(onTermination));
    watch_->begin(loop);
  }

  ~SystemChildProcess() override {
    if (IORuntime::shared().isForkedCopy()) {
      leaveToParent();
      return;
    }
    input_->close();
    output_->stop();
    errorOutput_->stop();
    watch_->forgetHandler();
  }

  std::shared_ptr<PipeReader> output() override { return output_; }
  std::shared_ptr<PipeReader> errorOutput() override { return errorOutput_; }

  void write(std::string bytes) override { input_->write(std::move(bytes)); }
  void closeInput() override { input_->closeWhenWritten(); }
  bool acceptsInput() const override { return input_->acceptsBytes(); }

  void terminate() override { signal(SIGTERM); }
  void kill() override { signal(SIGKILL); }
  void terminateGroup() override { signalGroup(SIGTERM); }
  void killGroup() override { signalGroup(SIGKILL); }

  int processIdentifier() const override { return watch_->process().identifier(); }
  bool isRunning() const override { return !termination(); }
  std::optional<Termination> termination() const override { return watch_->process().termination(); }

 private:
  void signal(int number) {
    if (!IORuntime::shared().isForkedCopy()) watch_->process().signal(number);
  }

  void signalGroup(int number) {
    if (!IORuntime::shared().isForkedCopy()) watch_->process().signalGroup(number);
  }

  /// Leaves the child to the process that started it. Closing its descriptors here would unregister them there: a
  /// forked process shares the system's side of the event loop.
  void leaveToParent() noexcept {
    for (auto* reader : {&output_, &errorOutput_}) {
      new (std::nothrow) std::shared_ptr<DescriptorReader>(std::move(*reader));
    }
    new (std::nothrow) std::shared_ptr<DescriptorWriter>(std::move(input_));
    new (std::nothrow) std::shared_ptr<TerminationWatch>(std::move(watch_));
  }

  std::shared_ptr<DescriptorWriter> input_;
  std::shared_ptr<DescriptorReader> output_;
  std::shared_ptr<DescriptorReader> errorOutput_;
  std::shared_ptr<TerminationWatch> watch_;
};

}  // namespace

SystemProcessLauncher& SystemProcessLauncher::shared() {
  static auto& launcher = *new SystemProcessLauncher();
  return launcher;
}

std::unique_ptr<ChildProcess> SystemProcessLauncher::launch(const LaunchSettings& settings,
                                                            TerminationHandler onTermination) {
  IORuntime::shared().start();
  return std::make_unique<SystemChildProcess>(IORuntime::shared().loop(), settings, notice_, std::move(onTermination));
}

}  // namespace ormel::detail
