#include "Support/InMemoryServer.h"

#include <errno.h>
#include <signal.h>

#include <algorithm>
#include <new>
#include <utility>

#include "OrmelSDK/Platform/ProcessLaunchError.h"

namespace ormel::testing {

/// The client's side.
class InMemoryProcess::Child final : public detail::ChildProcess {
 public:
  explicit Child(std::shared_ptr<InMemoryProcess> process) noexcept : process_(std::move(process)) {}
  ~Child() override {
    process_->clientClosesInput();
    process_->output_->stop();
    process_->errorOutput_->stop();
    process_->isHeld_ = false;
    // Let go of last: what it owns may call back.
    const auto released = std::exchange(process_->onTermination_, nullptr);
  }

  std::shared_ptr<detail::PipeReader> output() override {
    if (!process_->canBeRead_) throw std::bad_alloc();
    return process_->output_;
  }
  std::shared_ptr<detail::PipeReader> errorOutput() override { return process_->errorOutput_; }
  void write(std::string bytes) override { process_->clientWrites(std::move(bytes)); }
  void closeInput() override { process_->clientClosesInput(); }
  bool acceptsInput() const override { return process_->acceptsInput_; }
  void terminate() override {
    if (isRunning()) process_->signalTermination();
  }
  void kill() override {
    if (isRunning()) process_->signalKill();
  }
  int processIdentifier() const override { return process_->identifier_; }
  bool isRunning() const override { return !termination(); }
  std::optional<detail::Termination> termination() const override { return process_->noticedTermination_; }

 private:
  const std::shared_ptr<InMemoryProcess> process_;
};

InMemoryProcess::InMemoryProcess(SimulatedScheduler& scheduler, std::shared_ptr<const InMemoryServerScript> script,
                                 int identifier, detail::LaunchSettings settings,
                                 detail::TerminationHandler onTermination)
    : scheduler_(scheduler),
      script_(std::move(script)),
      identifier_(identifier),
      settings_(std::move(settings)),
      onTermination_(std::move(onTermination)),
      output_(std::make_shared<InMemoryPipe>(scheduler)),
      errorOutput_(std::make_shared<InMemoryPipe>(scheduler)) {}

void InMemoryProcess::start() {
  if (!script_->onStart) return;
  later([this] { script_->onStart(*this); });
}

void InMemoryProcess::write(std::string_view bytes) {
  if (isRunning()) output_->write(bytes);
}

void InMemoryProcess::send(const JSONValue& message) {
  sendUnended(message);
  write("\n");
}

void InMemoryProcess::sendUnended(const JSONValue& message) {
  if (isRunning() && script_->onSend) script_->onSend(*this, message);
  write(message.encode());
}

void InMemoryProcess::answer(const JSONValue& request, const JSONValue& result) {
  if (const auto* id = request.find("id")) send(JSONValue::object({{"id", *id}, {"result", result}}));
}

void InMemoryProcess::refuse(const JSONValue& request, std::string_view message) {
  const JSONValue error = JSONValue::object({{"code", -32000}, {"message", message}});
  if (const auto* id = request.find("id")) send(JSONValue::object({{"id", *id}, {"error", error}}));
}

void InMemoryProcess::notify(std::string_view method, const JSONValue& params) {
  send(JSONValue::object({{"method", method}, {"params", params}}));
}

void InMemoryProcess::request(const JSONValue& id, std::string_view method, const JSONValue& params) {
  send(JSONValue::object({{"id", id}, {"method", method}, {"params", params}}));
}

void InMemoryProcess::writeError(std::string_view bytes) {
  if (isRunning()) errorOutput_->write(bytes);
}

void InMemoryProcess::end(detail::Termination termination, bool pipesStayOpen) {
  if (!isRunning()) return;
  termination_ = termination;
  timers_.clear();
  inputIsBroken_ = true;
  if (!pipesStayOpen) {
    closeOutput();
    closeErrorOutput();
  }
  scheduler_.post([self = shared_from_this()] { self->noticeEnd(); }, "end of a process");
}

void InMemoryProcess::noticeEnd() {
  noticedTermination_ = termination_;
  if (terminationDelay_ > std::chrono::nanoseconds(0)) {
    // It has been entered, which letting go of the process does not undo.
    auto tellLate = [handler = std::exchange(onTermination_, nullptr), termination = *termination_] {
      if (handler) handler(termination);
    };
    evenAfterEnd(terminationDelay_, std::move(tellLate));
    return;
  }
  auto tell = [self = shared_from_this()] {
    if (const auto handler = std::exchange(self->onTermination_, nullptr)) handler(*self->termination_);
  };
  scheduler_.post(std::move(tell), "termination handler");
}

void InMemoryProcess::later(std::function<void()> work) {
  auto piece = [self = shared_from_this(), work = std::move(work)] {
    if (self->isRunning()) work();
  };
  scheduler_.post(std::move(piece), "server");
}

void InMemoryProcess::after(std::chrono::nanoseconds delay, std::function<void()> work) {
  auto piece = [weak = weak_from_this(), work = std::move(work)] {
    const auto self = weak.lock();
    if (self && self->isRunning()) work();
  };
  timers_.push_back(scheduler_.postAfter(delay, std::move(piece), "server's timer"));
}

void InMemoryProcess::evenAfterEnd(std::chrono::nanoseconds delay, std::function<void()> work) {
  timers_.push_back(scheduler_.postAfter(delay, std::move(work), "server's timer"));
}

std::vector<std::string> InMemoryProcess::methodsRead() const {
  std::vector<std::string> methods;
  for (const JSONValue& message : messagesRead_) {
    const JSONValue* method = message.find("method");
    methods.emplace_back(method ? method->stringValue().value_or("") : "");
  }
  return methods;
}

void InMemoryProcess::clientWrites(std::string bytes) {
  if (inputIsClosed_) return;
  if (inputIsBroken_) {
    acceptsInput_ = false;
    if (script_->onLostWrite) script_->onLostWrite(*this, bytes);
    return;
  }
  partialLine_ += bytes;
  for (auto end = partialLine_.find('\n'); end != std::string::npos; end = partialLine_.find('\n')) {
    linesWritten_.push_back(partialLine_.substr(0, end));
    partialLine_.erase(0, end + 1);
    if (script_->onClientWrite) script_->onClientWrite(*this, linesWritten_.back());
  }
  readInput();
}

void InMemoryProcess::clientClosesInput() {
  inputIsClosed_ = true;
  acceptsInput_ = false;
  readInput();
}

void InMemoryProcess::readInput() {
  const bool somethingIsThere = messagesRead_.size() < linesWritten_.size() || (inputIsClosed_ && !inputEndIsRead_);
  if (isReading_ || !isRunning() || !somethingIsThere) return;
  isReading_ = true;
  scheduler_.post([self = shared_from_this()] { self->readNext(); }, "server reads");
}

void InMemoryProcess::readNext() {
  isReading_ = false;
  if (!isRunning()) return;
  if (messagesRead_.size() < linesWritten_.size()) {
    messagesRead_.push_back(JSONValue::decode(linesWritten_[messagesRead_.size()]));
    const JSONValue message = messagesRead_.back();
    if (script_->onMessage) script_->onMessage(*this, message);
  } else {
    inputEndIsRead_ = true;
    if (script_->onInputEnd) {
      script_->onInputEnd(*this);
    } else {
      exit(0);
    }
  }
  readInput();
}

void InMemoryProcess::signalTermination() {
  ++terminationSignals_;
  auto signalled = [this] {
    if (script_->onTerminate) {
      script_->onTerminate(*this);
    } else {
      endBySignal(SIGTERM);
    }
  };
  later(std::move(signalled));
}

void InMemoryProcess::signalKill() {
  later([this] { endBySignal(SIGKILL); });
}

InMemoryServer::InMemoryServer(SimulatedScheduler& scheduler, InMemoryServerScript script) : scheduler_(scheduler) {
  setScript(std::move(script));
}

void InMemoryServer::setScript(InMemoryServerScript script) {
  script_ = std::make_shared<const InMemoryServerScript>(std::move(script));
}

std::unique_ptr<detail::ChildProcess> InMemoryServer::launch(const detail::LaunchSettings& settings,
                                                             detail::TerminationHandler onTermination) {
  ++launchesTried_;
  if (failuresLeft_ > 0) {
    --failuresLeft_;
    throw detail::ProcessLaunchError(settings.executable, ENOENT);
  }
  const int identifier = 1000 + static_cast<int>(processes_.size());
  auto process = std::make_shared<InMemoryProcess>(scheduler_, script_, identifier, settings, std::move(onTermination));
  if (unreadLeft_ > 0) {
    --unreadLeft_;
    process->canBeRead_ = false;
  }
  processes_.push_back(process);
  process->start();
  return std::make_unique<InMemoryProcess::Child>(std::move(process));
}

namespace {

template <typename Test>
std::size_t count(const std::vector<std::shared_ptr<InMemoryProcess>>& processes, Test test) {
  return static_cast<std::size_t>(
      std::count_if(processes.begin(), processes.end(), [test](const auto& process) { return (*process.*test)(); }));
}

}  // namespace

std::size_t InMemoryServer::running() const { return count(processes_, &InMemoryProcess::isRunning); }
std::size_t InMemoryServer::held() const { return count(processes_, &InMemoryProcess::isHeldByClient); }
std::size_t InMemoryServer::read() const { return count(processes_, &InMemoryProcess::isRead); }

}  // namespace ormel::testing
