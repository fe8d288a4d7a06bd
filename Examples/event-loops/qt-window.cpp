// A window with a conversation, all of it on the thread of the window. Ctrl-C in the terminal closes it.
// Usage: qt-window [--ask TEXT] [SERVER]

#include <OrmelSDK/Events/TextNews.h>
#include <OrmelSDK/LoopScheduler.h>
#include <OrmelSDK/Ormel.h>

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <csignal>
#include <iostream>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Runs a scheduler in the event loop of the application.
class LoopDriver {
 public:
  explicit LoopDriver(ormel::LoopScheduler& scheduler)
      : scheduler_(scheduler), ready_(scheduler.descriptor(), QSocketNotifier::Read) {
    timer_.setSingleShot(true);
    QObject::connect(&ready_, &QSocketNotifier::activated, [this] { run(); });
    QObject::connect(&timer_, &QTimer::timeout, [this] { run(); });
  }

 private:
  void run() {
    scheduler_.runReady();
    const auto time = scheduler_.timeToNextTimer();
    if (time) timer_.start(std::chrono::ceil<std::chrono::milliseconds>(*time));
  }

  ormel::LoopScheduler& scheduler_;
  QSocketNotifier ready_;
  QTimer timer_;
};

/// The end that the handler of SIGINT writes to; a handler may do little else.
int interruptWriteEnd = -1;

class Interrupts {
 public:
  Interrupts() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
    interruptWriteEnd = ends[1];
    notifier_ = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [] { QApplication::quit(); });
    std::signal(SIGINT, [](int) { [[maybe_unused]] const auto written = write(interruptWriteEnd, "!", 1); });
  }

 private:
  std::unique_ptr<QSocketNotifier> notifier_;
};

class ConversationWindow final : public QWidget {
 public:
  ConversationWindow(ormel::Thread thread, ormel::LoopScheduler& loop) : thread_(std::move(thread)), loop_(loop) {
    setWindowTitle("A conversation");
    resize(560, 320);
    shown_.setReadOnly(true);
    prompt_.setPlaceholderText("Ask something");
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(&shown_);
    layout->addWidget(&prompt_);
    connect(&prompt_, &QLineEdit::returnPressed, [this] { ask(prompt_.text()); });
  }
  ~ConversationWindow() override {
    // The turn ends at the server too, and what is left of the task finds the window gone.
    controller_.abort();
  }

  void ask(const QString& question) {
    prompt_.clear();
    prompt_.setEnabled(false);
    shown_.appendPlainText("> " + question + "\n");
    answer(thread_, question.toStdString(), this, controller_.signal)
        .onScheduler(loop_)
        .start([window = QPointer<ConversationWindow>(this)](ormel::TaskResult<void> result) {
          if (window) window->answered(std::move(result));
        });
  }

 private:
  static ormel::Task<void> answer(ormel::Thread thread, std::string question, QPointer<ConversationWindow> window,
                                  ormel::AbortSignal signal) {
    ormel::TurnOptions turnOptions;
    turnOptions.signal = signal;
    ormel::StreamedTurn turn = co_await thread.runStreamed(std::move(question), turnOptions);
    ormel::TextNews news;
    while (auto event = co_await turn.events.next()) {
      const ormel::NewText added = news.ofMessage(*event);
      // Still on the thread of the window, so it may be asked and changed without a lock.
      if (window) window->show(QString::fromStdString(std::string(added.text)));
    }
  }

  void show(const QString& text) {
    shown_.moveCursor(QTextCursor::End);
    shown_.insertPlainText(text);
  }

  void answered(ormel::TaskResult<void> result) {
    try {
      result.take();
    } catch (const ormel::Error& error) {
      show(QString(error.what()) + "\n" + QString::fromStdString(error.advice()));
    }
    show("\n");
    prompt_.setEnabled(true);
    prompt_.setFocus();
  }

  ormel::Thread thread_;
  ormel::LoopScheduler& loop_;
  const ormel::AbortController controller_;
  QPlainTextEdit shown_;
  QLineEdit prompt_;
};

}  // namespace

int main(int argumentCount, char** arguments) try {
  QApplication application(argumentCount, arguments);
  QStringList words = QApplication::arguments().mid(1);
  const bool asks = words.size() > 1 && words.front() == "--ask";
  const QString question = asks ? words[1] : QString();
  if (asks) words = words.mid(2);

  ormel::OrmelOptions options;
  if (!words.isEmpty()) options.ormelPathOverride = words.front().toStdString();

  ormel::LoopScheduler loop;
  const LoopDriver driver(loop);
  const Interrupts interrupts;
  ConversationWindow window(ormel::Ormel(options).startThread(), loop);
  window.QWidget::show();
  if (asks) window.ask(question);
  return QApplication::exec();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
