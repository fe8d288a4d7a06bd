#include "OrmelSDK/KeptProcess.h"

#include <chrono>
#include <utility>

namespace ormel::detail {

namespace {

/// The process in the hands of its connection.
class LentProcess final : public ChildProcess {
 public:
  explicit LentProcess(std::shared_ptr<ChildProcess> process) : process_(std::move(process)) {}

  std::shared_ptr<PipeReader> output() override { return process_->output(); }
  std::shared_ptr<PipeReader> errorOutput() override { return process_->errorOutput(); }
  void write(std::string bytes) override { process_->write(std::move(bytes)); }
  void closeInput() override { process_->closeInput(); }
  bool acceptsInput() const override { return process_->acceptsInput(); }
  void terminate() override { process_->closeInput(); }
  void kill() override { process_->kill(); }
  int processIdentifier() const override { return process_->processIdentifier(); }
  bool isRunning() const override { return process_->isRunning(); }
  std::optional<Termination> termination() const override { return process_->termination(); }

 private:
  std::shared_ptr<ChildProcess> process_;
};

}  // namespace

std::unique_ptr<ChildProcess> KeptProcess::launch(const LaunchSettings& settings, TerminationHandler onTermination) {
  process_ =
      launcher_.launch(settings, [notice = notice_, next = std::move(onTermination)](const Termination& termination) {
        notice->tell(termination);
        next(termination);
      });
  wasStarted_ = true;
  return std::make_unique<LentProcess>(process_);
}

Task<void> KeptProcess::end(Scheduler& scheduler) {
  constexpr std::chrono::milliseconds patience{500};
  if (!process_) co_return;
  process_->closeInput();
  co_await TerminationNotice::awaited(notice_, scheduler, patience);
  process_->terminateGroup();
  co_await TerminationNotice::awaited(notice_, scheduler, patience);
  process_->killGroup();
  co_await TerminationNotice::awaited(notice_, scheduler, std::chrono::seconds(1));
  process_.reset();
}

}  // namespace ormel::detail
