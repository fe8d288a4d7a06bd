#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Command.h"
#include "Console.h"
#include "EventRenderer.h"
#include "Inbox.h"
#include "LineInput.h"
#include "Options.h"
#include "OrmelSDK/Options/AbortSignal.h"
#include "OrmelSDK/Ormel.h"
#include "OrmelSDK/Thread.h"
#include "QuestionDesk.h"
#include "ServerChoice.h"
#include "Signals.h"

namespace ormel::chat {

/// A conversation in the terminal. One thread reads the user's lines, the library's news and signals, and does all the
/// writing.
class Session {
 public:
  Session(Options options, const ServerChoice& server);

  /// Runs to the end and gives the status to exit with.
  int run();

 private:
  enum class Phase { idle, starting, running };

  void greet(const ServerChoice& server);

  // Input.
  void wait();
  bool wantsInput() const;
  bool canTakeLine() const;
  void takeLine();
  bool hasTakenEarlierLines();
  void takeEndOfInput();
  void takeSignals();
  void perform(const Command& command);
  void performIdle(const Command& command);
  void performDuringOperation(const Command& command);
  void interrupt();
  void suspend();

  // The operation.
  void start(const Command& command);
  Task<StreamedTurn> operation(const Command& command) const;
  void begin();
  void steer(const std::string& text);
  void startCall(const Command& command);
  /// The id of this conversation; tells the user if it has none yet.
  std::optional<std::string> currentThread();
  Task<void> call(const Command& command);

  // News of the library.
  /// Whether there was any.
  bool takeMessages();
  void take(Message& message);
  void takeNews(OperationAccepted&);
  void takeNews(ThreadEvent& event);
  void takeNews(OperationEnded& news);
  void takeNews(SteerEnded& news);
  void takeNews(QuestionAsked& news) { addQuestion(std::move(news.question)); }
  void takeNews(QuestionWithdrawn& news) { withdrawQuestion(news.question); }
  void takeNews(ThreadChosen& news);
  void takeNews(Notice& news) { tell(news.text, news.style); }
  /// For a person to enter them again, or as the next prompts.
  void giveRefusedBack();
  void addQuestion(std::shared_ptr<Question> question);
  /// The text typed before the question, and shown, is there again.
  void endAsking();
  void withdrawQuestion(const std::shared_ptr<Question>& question);
  void noteQuestions(const ThreadEvent& event);
  void noteOutcome(const ThreadEvent& event);
  int statusOf(const std::exception_ptr& failure);

  // Output.
  Console& notes() { return ownNotes_ ? *ownNotes_ : output_; }
  void tell(std::string_view text, Style style = Style::dim);
  /// Whether a question, or the prompt, has to be shown, perhaps again.
  bool needsToAsk() const;
  bool isOverdue() const;
  void askForInput();
  void openRow();
  /// Shows on a terminal what was typed of the next line.
  void showTyping();
  void showOnRow(const std::string& shown);
  /// So that what comes from a pipe can be followed, too.
  void showTakenLine(const std::string& line);
  void leaveLine();
  void leave(int status) { exitStatus_ = status; }

  const Options options_;
  const std::shared_ptr<Inbox> inbox_;
  const Signals signals_{inbox_->wakePipe(), true};
  LineInput input_;
  Console output_;
  /// Notes, which are no part of the answer, go where a person sees the answer, else to standard error.
  std::optional<Console> ownNotes_;
  EventRenderer renderer_;
  QuestionDesk questions_;
  std::chrono::steady_clock::time_point questionsSince_;
  std::map<std::string, std::shared_ptr<Question>> userInputQuestions_;
  const Ormel ormel_;
  Thread thread_;
  const std::chrono::milliseconds quietBeforeQuestion_;

  Phase phase_ = Phase::idle;
  /// The controller of the operation that was started last.
  std::optional<AbortController> abort_;
  /// Whether the events so far say that the operation has failed.
  bool hasFailed_ = false;
  /// The status of the last operation.
  int status_ = 0;
  /// The interrupts since the last line of the user.
  int interrupts_ = 0;
  /// Additions to the turn of which the server has said nothing yet, and those that it has refused.
  int pendingSteers_ = 0;
  std::vector<std::string> refusedSteers_;
  bool hasPrompted_ = false;
  /// Whether the last line of the screen is one to type in; what of that stands there, and how much room is before it.
  bool isRowOpen_ = false;
  std::string shownTyping_;
  int promptColumns_ = 0;
  std::optional<int> exitStatus_;
};

}  // namespace ormel::chat
