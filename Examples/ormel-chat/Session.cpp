#include "Session.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "Approvals.h"
#include "Elicitations.h"
#include "ForeignText.h"
#include "Operation.h"
#include "OrmelSDK/Base/OrmelProcessError.h"
#include "Texts.h"
#include "ThreadCommands.h"
#include "UserInputQuestion.h"

namespace ormel::chat {

namespace {

constexpr int interruptedStatus = 130;
constexpr int failedStatus = 1;
constexpr int signalStatusBase = 128;

constexpr int columnsOfPrompt = 4;
constexpr int columnsOfLongestQuestion = 34;

/// A question and what the server said before it come by different ways. It is shown when nothing has come for the
/// first of these times, or when it has waited for the second.
constexpr std::chrono::milliseconds usualQuietBeforeQuestion{30};
constexpr std::chrono::milliseconds longestDelayOfQuestion{300};

constexpr std::string_view sideInstructions =
    "This is a question beside the main conversation. Answer it briefly, and change nothing.";

std::chrono::milliseconds quietBeforeQuestion() {
  const char* told = std::getenv("ORMEL_CHAT_QUIET_MS");
  return told ? std::chrono::milliseconds(std::atoi(told)) : usualQuietBeforeQuestion;
}

ThreadOptions threadOptions(const Options& options, const std::shared_ptr<Inbox>& inbox) {
  ThreadOptions result;
  result.model = options.model;
  result.workingDirectory = std::filesystem::canonical(options.directory.value_or(".")).string();
  installApprovals(result, inbox, options.approvesEverything);
  installElicitations(result, inbox);
  return result;
}

Thread makeThread(const Ormel& ormel, const std::optional<std::string>& id, ThreadOptions threadOptions) {
  if (id) return ormel.resumeThread(*id, std::move(threadOptions));
  return ormel.startThread(std::move(threadOptions));
}

}  // namespace

Session::Session(Options options, const ServerChoice& server)
    : options_(std::move(options)),
      inbox_(std::make_shared<Inbox>(options_.json && options_.jsonUpdates == JSONUpdates::full)),
      output_(STDOUT_FILENO),
      renderer_(output_),
      ormel_(server.ormel),
      thread_(makeThread(ormel_, options_.resumedThread, threadOptions(options_, inbox_))),
      quietBeforeQuestion_(quietBeforeQuestion()) {
  if (!output_.isTerminal() || options_.json) ownNotes_.emplace(STDERR_FILENO, Console::Readers::people);
  if (input_.isTerminal() && notes().isTerminal()) input_.editLines(notes().descriptor());
  if (options_.json) renderer_.showAsJSON(options_.jsonUpdates);
  greet(server);
}

void Session::greet(const ServerChoice& server) {
  if (server.isSimulator) {
    tell("No ormel server was found: this is ormel-simulator, which only plays an agent.", Style::yellow);
  }
  if (!options_.prompt && input_.isTerminal()) {
    tell("Talking with " + server.ormel.executablePath() + "; /help tells what you can do.");
  }
}

int Session::run() {
  if (options_.prompt) start({Command::Kind::prompt, *options_.prompt});
  while (!exitStatus_) {
    // Output would tear the line that is being typed; it can wait as long as that.
    const bool isTyping = input_.isBeingTyped();
    if (isTyping) inbox_->wakePipe().drain();
    const bool isQuiet = !isTyping && !takeMessages();
    takeSignals();
    if (!isTyping && (isQuiet || isOverdue()) && hasTakenEarlierLines()) askForInput();
    while (!exitStatus_ && canTakeLine()) takeLine();
    if (!exitStatus_ && input_.isAtEnd()) takeEndOfInput();
    showTyping();
    if (!exitStatus_) wait();
  }
  leaveLine();
  if (const auto id = thread_.id(); id && !options_.prompt && input_.isTerminal()) {
    tell("To go on with this conversation: ormel-chat --resume " + visible(shellWord(*id)));
  }
  output_.flush();
  notes().flush();
  return *exitStatus_;
}

void Session::wait() {
  output_.flush();
  notes().flush();
  struct pollfd polled[] = {{wantsInput() ? input_.descriptor() : -1, POLLIN, 0},
                            {inbox_->wakePipe().descriptor(), POLLIN, 0}};
  auto timeout = needsToAsk() ? quietBeforeQuestion_ : std::chrono::milliseconds(-1);
  if (input_.isBeingTyped()) timeout = input_.untilTypingPauses() + std::chrono::milliseconds(1);
  if (::poll(polled, 2, static_cast<int>(timeout.count())) < 0) return;
  if (polled[0].revents != 0) input_.readAvailable();
}

bool Session::wantsInput() const {
  if (input_.isTerminal() || !questions_.isEmpty()) return true;
  // The input behind a single prompt in a pipe is for others, until there is a question.
  return !options_.prompt;
}

bool Session::canTakeLine() const {
  if (!input_.hasLine()) return false;
  if (questions_.hasAsked()) return true;
  // A script's next line is for the question that is about to be asked.
  if (phase_ == Phase::idle) return input_.isTerminal() || questions_.isEmpty();
  const auto kind = readCommand(input_.line()).kind;
  if (!input_.isTerminal()) return phase_ == Phase::running && kind == Command::Kind::steer;
  return phase_ == Phase::running || kind == Command::Kind::quit || kind == Command::Kind::help;
}

void Session::takeLine() {
  if (input_.isEditing()) {
    showOnRow(input_.shownLine());
  } else if (input_.isTerminal()) {
    notes().noteLineEntered();
  }
  const std::string line = input_.takeLine();
  interrupts_ = 0;
  const Command command = readCommand(line);
  const bool isCommand = command.kind == Command::Kind::quit || command.kind == Command::Kind::help ||
                         command.kind == Command::Kind::steer;
  // A line that was typed before the question could be seen is no answer to it.
  if (questions_.hasAsked() && !isCommand) {
    // A terminal shows what is typed by itself.
    if (!input_.isTerminal() && !questions_.isSecret()) notes().write(line);
    leaveLine();
    questions_.answer(line, input_.isTerminal());
    endAsking();
    // The choice of a conversation holds for the line behind it.
    takeMessages();
  } else {
    leaveLine();
    if (!input_.isTerminal()) showTakenLine(line);
    perform(command);
  }
}

void Session::showTakenLine(const std::string& line) {
  renderer_.pause();
  output_.flush();
  notes().separate();
  notes().line("> " + line, Style::bold);
  notes().flush();
}

void Session::takeEndOfInput() {
  if (questions_.hasAsked()) {
    leaveLine();
    questions_.answer(std::nullopt, false);
    endAsking();
  } else if (questions_.isEmpty() && phase_ == Phase::idle && pendingSteers_ == 0) {
    leave(status_);
  }
}

void Session::takeSignals() {
  if (const int signal = signals_.termination(); signal != 0) leave(signalStatusBase + signal);
  for (int count = signals_.takeInterrupts(); count > 0; --count) interrupt();
  if (signals_.takeSuspension()) suspend();
}

void Session::suspend() {
  leaveLine();
  output_.flush();
  notes().flush();
  const bool wasEditing = input_.isEditing();
  input_.release();
  ::raise(SIGSTOP);
  if (wasEditing) input_.editLines(notes().descriptor());
}

void Session::interrupt() {
  if (input_.hasTyping()) {
    input_.clearTyping();
    notes().write("^C");
    leaveLine();
  } else if (++interrupts_ > 1) {
    leave(interruptedStatus);
  } else if (phase_ == Phase::idle) {
    tell("Ctrl-C again leaves.");
  } else {
    tell("Interrupting; Ctrl-C again leaves at once.", Style::yellow);
    abort_->abort();
  }
}

void Session::perform(const Command& command) {
  switch (command.kind) {
    case Command::Kind::nothing:
      break;
    case Command::Kind::help:
      tell(helpText());
      break;
    case Command::Kind::quit:
      leave(phase_ == Phase::idle ? status_ : interruptedStatus);
      break;
    case Command::Kind::unknown:
      tell("There is no command " + command.text + "; /help tells which there are.", Style::red);
      break;
    default:
      if (phase_ == Phase::idle) {
        performIdle(command);
      } else {
        performDuringOperation(command);
      }
  }
}

void Session::performIdle(const Command& command) {
  if (command.kind == Command::Kind::steer) {
    tell("There is nothing to steer: the agent does nothing now.", Style::red);
  } else if (command.kind == Command::Kind::side && command.text.empty()) {
    tell("/side needs a text.", Style::red);
  } else if (command.kind == Command::Kind::name && command.text.empty()) {
    tell("/name needs a text.", Style::red);
  } else if (isAboutThreads(command.kind)) {
    startCall(command);
  } else {
    start(command);
  }
}

void Session::performDuringOperation(const Command& command) {
  if (command.kind == Command::Kind::prompt || command.kind == Command::Kind::steer) {
    steer(command.text);
  } else {
    tell("The agent is busy; Ctrl-C interrupts it.", Style::red);
  }
}

void Session::steer(const std::string& text) {
  if (text.empty()) {
    tell("/steer needs a text.", Style::red);
  } else {
    ++pendingSteers_;
    followSteer(thread_.steer(text), text, inbox_);
  }
}

void Session::begin() {
  abort_.emplace();
  hasFailed_ = false;
  phase_ = Phase::starting;
}

void Session::start(const Command& command) {
  begin();
  follow(operation(command), inbox_);
}

void Session::startCall(const Command& command) {
  Task<void> started = call(command);
  if (!started) return;
  begin();
  std::stop_source stop;
  abort_->signal.register_([stop]() mutable { stop.request_stop(); });
  followToEnd(std::move(started), inbox_, stop.get_token());
}

std::optional<std::string> Session::currentThread() {
  auto id = thread_.id();
  if (!id) tell("There is no conversation yet.", Style::red);
  return id;
}

Task<void> Session::call(const Command& command) {
  if (command.kind == Command::Kind::threads) return showThreads(ormel_, inbox_);
  if (command.kind == Command::Kind::resume) {
    return command.text.empty() ? offerThreads(ormel_, inbox_) : chooseThread(ormel_, command.text, inbox_);
  }
  const auto id = currentThread();
  if (!id) return {};
  if (command.kind == Command::Kind::name) return nameThread(ormel_, *id, command.text, inbox_);
  if (command.kind == Command::Kind::fork) return forkThread(ormel_, *id, inbox_);
  return archiveThread(ormel_, *id, inbox_);
}

Task<StreamedTurn> Session::operation(const Command& command) const {
  TurnOptions turnOptions;
  turnOptions.signal = abort_->signal;
  switch (command.kind) {
    case Command::Kind::review:
      return thread_.startReviewStreamed(
          command.text.empty() ? ReviewTarget::uncommittedChanges() : ReviewTarget::custom(command.text),
          ReviewDelivery::inline_, abort_->signal);
    case Command::Kind::compact:
      return thread_.compactStreamed(abort_->signal);
    case Command::Kind::side:
      return thread_.runSideConversationStreamed(command.text, std::string(sideInstructions), std::move(turnOptions));
    default:
      return thread_.runStreamed(command.text, std::move(turnOptions));
  }
}

bool Session::takeMessages() {
  auto messages = inbox_->take();
  for (Message& message : messages) take(message);
  return !messages.empty();
}

void Session::take(Message& message) {
  std::visit([this](auto& news) { takeNews(news); }, message);
}

void Session::takeNews(OperationAccepted&) { phase_ = Phase::running; }

void Session::takeNews(ThreadEvent& event) {
  noteOutcome(event);
  noteQuestions(event);
  leaveLine();
  renderer_.show(event);
}

void Session::takeNews(ThreadChosen& news) {
  thread_ = makeThread(ormel_, news.id, threadOptions(options_, inbox_));
  tell(news.text);
}

void Session::noteOutcome(const ThreadEvent& event) {
  visit(
      event, [this](const TurnFailedEvent&) { hasFailed_ = true; },
      [this](const ThreadErrorEvent&) { hasFailed_ = true; }, [this](const TurnCompletedEvent&) { hasFailed_ = false; },
      [](const auto&) {});
}

void Session::noteQuestions(const ThreadEvent& event) {
  const auto* started = std::get_if<ItemStartedEvent>(&event.value);
  const auto* completed = std::get_if<ItemCompletedEvent>(&event.value);
  if (!started && !completed) return;
  const auto* item = std::get_if<McpToolCallItem>(&(started ? started->item : completed->item).value);
  if (!item || !isUserInputRequest(*item)) return;
  if (completed) {
    withdrawQuestion(std::exchange(userInputQuestions_[item->id], nullptr));
  } else if (auto question = userInputQuestion(*item, thread_, inbox_)) {
    userInputQuestions_[item->id] = question;
    addQuestion(std::move(question));
  }
}

void Session::takeNews(SteerEnded& news) {
  --pendingSteers_;
  if (!news.failure) return;
  try {
    std::rethrow_exception(news.failure);
  } catch (const std::exception& error) {
    tell(error.what(), Style::red);
  }
  refusedSteers_.push_back(std::move(news.text));
  if (phase_ == Phase::idle) giveRefusedBack();
}

void Session::giveRefusedBack() {
  if (!refusedSteers_.empty()) {
    tell(input_.isEditing() ? "It did not reach the turn; Enter makes it the next prompt."
                            : "It did not reach the turn; it is the next prompt.");
  }
  for (; !refusedSteers_.empty(); refusedSteers_.pop_back()) input_.putBack(refusedSteers_.back());
}

void Session::addQuestion(std::shared_ptr<Question> question) {
  if (questions_.isEmpty()) questionsSince_ = std::chrono::steady_clock::now();
  questions_.add(std::move(question));
}

void Session::withdrawQuestion(const std::shared_ptr<Question>& question) {
  leaveLine();
  // A user who has interrupted the turn knows why.
  if (!questions_.withdraw(question)) return;
  endAsking();
  if (interrupts_ == 0) tell("The server needs no answer to this any more.");
}

void Session::endAsking() {
  input_.setHidden(false);
  input_.takeUp();
}

void Session::takeNews(OperationEnded& news) {
  leaveLine();
  renderer_.endOperation();
  phase_ = Phase::idle;
  for (const auto& [itemID, question] : std::exchange(userInputQuestions_, {})) {
    if (questions_.withdraw(question)) endAsking();
  }
  status_ = statusOf(news.failure);
  if (options_.prompt) {
    leave(status_);
  } else {
    giveRefusedBack();
  }
}

int Session::statusOf(const std::exception_ptr& failure) {
  if (!failure) return hasFailed_ ? failedStatus : 0;
  try {
    std::rethrow_exception(failure);
  } catch (const OrmelProcessError& error) {
    if (error.kind() == OrmelProcessError::Kind::aborted) {
      tell("Interrupted.", Style::yellow);
      return interruptedStatus;
    }
    tell(error.what(), Style::red);
    if (error.cause()) tell(error.advice());
  } catch (const Error& error) {
    tell(error.what(), Style::red);
    if (error.cause()) tell(error.advice());
  } catch (const std::exception& error) {
    tell(error.what(), Style::red);
  }
  return failedStatus;
}

void Session::tell(std::string_view text, Style style) {
  leaveLine();
  renderer_.pause();
  notes().line(text, style);
  notes().flush();
}

bool Session::needsToAsk() const {
  if (hasPrompted_) return false;
  return !questions_.isEmpty() || (phase_ == Phase::idle && input_.isTerminal());
}

bool Session::isOverdue() const {
  return !questions_.isEmpty() && !questions_.hasAsked() &&
         std::chrono::steady_clock::now() - questionsSince_ > longestDelayOfQuestion;
}

// A line that was typed before a question was to be seen is no answer to it, however shortly before. True when there is
// none left.
bool Session::hasTakenEarlierLines() {
  if (!input_.isTerminal() || questions_.isEmpty() || questions_.hasAsked()) return true;
  struct pollfd polled = {input_.descriptor(), POLLIN, 0};
  if (::poll(&polled, 1, 0) > 0) input_.readAvailable();
  while (!exitStatus_ && canTakeLine()) takeLine();
  return !input_.hasLine();
}

void Session::askForInput() {
  if (!needsToAsk()) return;
  leaveLine();
  renderer_.pause();
  output_.flush();
  if (questions_.isEmpty()) {
    notes().separate();
    openRow();
  } else {
    // Nobody who typed before could see the question.
    if (!questions_.hasAsked()) input_.setAside();
    input_.setHidden(questions_.isSecret());
    questions_.ask(notes());
    isRowOpen_ = true;
    promptColumns_ = columnsOfLongestQuestion;
  }
  hasPrompted_ = true;
}

void Session::openRow() {
  notes().beginAsking();
  notes().write("> ", Style::bold);
  isRowOpen_ = true;
  shownTyping_.clear();
  promptColumns_ = columnsOfPrompt;
}

void Session::showTyping() {
  // Output has come in between; the row comes back with the next key.
  if (!isRowOpen_ && !input_.isBeingTyped()) return;
  if (input_.isEditing()) showOnRow(input_.shownTyping());
}

void Session::showOnRow(const std::string& shown) {
  if (!isRowOpen_ && shown.empty()) return;
  const bool isErased =
      shownTyping_.starts_with(shown) && promptColumns_ + columnsOfShown(shownTyping_) < notes().columns();
  const bool isContinued = shown.starts_with(shownTyping_);
  if (!isRowOpen_ || (!isContinued && !isErased)) {
    renderer_.pause();
    output_.flush();
    openRow();
  }
  if (shown.starts_with(shownTyping_)) {
    notes().write(std::string_view(shown).substr(shownTyping_.size()));
  } else {
    notes().erase(columnsOfShown(std::string_view(shownTyping_).substr(shown.size())));
  }
  shownTyping_ = shown;
}

void Session::leaveLine() {
  if (!hasPrompted_ && !isRowOpen_) return;
  notes().endLine();
  hasPrompted_ = false;
  isRowOpen_ = false;
  shownTyping_.clear();
}

}  // namespace ormel::chat
